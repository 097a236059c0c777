// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FileUrl.h"
#include "platform/LaunchArguments.h"
#include "platform/SingleInstance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

namespace {

// The roles the test binary plays as a child process: a later launch as main() runs
// it, and a program that tries to become the first.
constexpr char secondLaunchRole[] = "--as-second-launch";
constexpr char primaryRole[] = "--as-primary";
constexpr int notForwarded = 3;
constexpr int notRegistered = 4;

int playRole(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (qstrcmp(argv[1], primaryRole) == 0) {
        SingleInstance instance;
        return instance.registerPrimary() ? 0 : notRegistered;
    }
    QList<QByteArray> arguments;
    for (int i = 2; i < argc; ++i)
        arguments << QByteArray(argv[i]);
    return SingleInstance::forwardIfRunning(arguments) ? 0 : notForwarded;
}

} // namespace

class TestSingleInstance : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"),
                 "runs inside dbus-run-session");
        QVERIFY(work.isValid());
        QVERIFY(other.isConnected());
        QVERIFY(QDir::setCurrent(work.path()));
    }
    void cleanup() {
        primary.reset();
        window.reset();
    }
    void cleanupTestCase() { QDBusConnection::disconnectFromBus(other.name()); }

    // Each argument of a later launch as the running program receives it, and as it
    // turns back into a path there. A relative one is handed over in
    // laterLaunchHandsOverItsArguments.
    void argumentsRoundTrip_data() {
        QTest::addColumn<QByteArray>("argument");
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QByteArray>("path"); // empty: the argument itself
        using B = QByteArray;
        QTest::newRow("root") << B("/") << "file:///" << B();
        QTest::newRow("non-ASCII") << B("/data/Übersicht 日本")
                                   << "file:///data/%C3%9Cbersicht%20%E6%97%A5%E6%9C%AC" << B();
        QTest::newRow("not UTF-8") << B("/data/caf\xe9\xff") << "file:///data/caf%E9%FF" << B();
        QTest::newRow("URI marks")
            << B("/a/100%#1?x=y;z") << "file:///a/100%25%231%3Fx%3Dy%3Bz" << B();
        QTest::newRow("file URI kept") << B("file:///home/u/My%20Files")
                                       << "file:///home/u/My%20Files" << B("/home/u/My Files");
        QTest::newRow("file URI not UTF-8")
            << B("file:///x/caf%E9") << "file:///x/caf%E9" << B("/x/caf\xe9");
    }
    void argumentsRoundTrip() {
        QFETCH(QByteArray, argument);
        QFETCH(QString, uri);
        QFETCH(QByteArray, path);
        if (path.isEmpty())
            path = argument;
        const QStringList uris = urisForArguments({argument, ""});
        QCOMPARE(uris, QStringList{uri});
        QCOMPARE(localPathBytes(QUrl(uris.first())), path);
        QCOMPARE(argumentAsPath(uris.first().toLatin1()), path);
    }

    // A path that is not a URI stays as it was, even one that looks half like one.
    void argumentAsPathKeepsPaths() {
        for (const char* path : {"/srv/file:x", "file:relative", "caf\xe9"})
            QCOMPARE(argumentAsPath(path), QByteArray(path));
    }

    // A later launch hands its arguments over, with the launcher's token so the window
    // may take the focus for it, and ends; one without arguments only brings the window
    // forward.
    void laterLaunchHandsOverItsArguments() {
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        qunsetenv("XDG_ACTIVATION_TOKEN");
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("launch-42"));
        // The shell puts in a name whose bytes are not UTF-8.
        QProcess child;
        child.setProcessEnvironment(env);
        child.setWorkingDirectory(work.path());
        child.start(QStringLiteral("/bin/sh"),
                    {"-c", R"sh(exec "$0" --as-second-launch "$1" "$2" "$(printf 'caf\351')")sh",
                     QCoreApplication::applicationFilePath(), "/srv/My Files", "rel dir"});
        QVERIFY(opened.wait(15000));
        QVERIFY(child.waitForFinished(15000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(opened.size(), 1);
        QList<QByteArray> paths;
        for (const QUrl& url : opened[0][0].value<QList<QUrl>>())
            paths << localPathBytes(url);
        const QByteArray base = QFile::encodeName(work.path());
        QCOMPARE(paths, (QList<QByteArray>{"/srv/My Files", base + "/rel dir", base + "/caf\xe9"}));
        QVERIFY(window->isVisible());
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("launch-42"));
        qunsetenv("XDG_ACTIVATION_TOKEN");

        window->hide();
        QCOMPARE(runChild({secondLaunchRole}), 0);
        QVERIFY(window->isVisible());
        QCOMPARE(opened.size(), 1);
    }

    void theNameHasOneOwnerUntilReleased() {
        // Before any program owns it, a launch runs alone.
        QCOMPARE(runChild({secondLaunchRole, "/srv"}), notForwarded);
        startPrimary();
        QCOMPARE(runChild({primaryRole}), notRegistered);
        QVERIFY(!SingleInstance().registerPrimary());
        QCOMPARE(other.interface()->serviceOwner(SingleInstance::serviceName).value(),
                 QDBusConnection::sessionBus().baseService());
        primary.reset();
        QVERIFY(!other.interface()->isServiceRegistered(SingleInstance::serviceName).value());
        QCOMPARE(runChild({primaryRole}), 0);
    }

    void withoutASessionBusEachLaunchRunsAlone_data() {
        QTest::addColumn<QString>("address"); // "" : no address at all
        QTest::newRow("no address") << "";
        QTest::newRow("no bus there") << "unix:path=" + work.path() + "/no-bus";
    }
    void withoutASessionBusEachLaunchRunsAlone() {
        QFETCH(QString, address);
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        if (!address.isEmpty())
            env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);
        QCOMPARE(runChild({secondLaunchRole, "/srv"}, env), notForwarded);
        QCOMPARE(runChild({primaryRole}, env), notRegistered);
        QCoreApplication::processEvents();
        QCOMPARE(opened.size(), 0);
    }

    // Open passes on local files only; the program declares no actions.
    void callsFromTheDesktop() {
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        const auto call = [&](const QString& method, const QVariantList& arguments) {
            QDBusMessage message = QDBusMessage::createMethodCall(
                SingleInstance::serviceName, SingleInstance::objectPath,
                QStringLiteral("org.freedesktop.Application"), method);
            message.setArguments(arguments);
            QDBusPendingCall pending = other.asyncCall(message);
            return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.error().type()
                                                                         : QDBusError::Timeout;
        };
        const QStringList uris{"https://example.org/", "file:///srv/a", "file:///srv/b"};
        QCOMPARE(call("Open", {uris, QVariantMap()}), QDBusError::NoError);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0][0].value<QList<QUrl>>(),
                 (QList<QUrl>{QUrl("file:///srv/a"), QUrl("file:///srv/b")}));
        QCOMPARE(call("Open", {QStringList{"https://example.org/"}, QVariantMap()}),
                 QDBusError::NoError);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(call("ActivateAction", {"about", QVariantList(), QVariantMap()}),
                 QDBusError::InvalidArgs);
    }

private:
    void startPrimary() {
        window = std::make_unique<QWidget>();
        primary = std::make_unique<SingleInstance>();
        QObject::connect(primary.get(), &SingleInstance::activationRequested, window.get(),
                         [w = window.get()] { w->show(); });
        QVERIFY(primary->registerPrimary());
    }

    int runChild(const QStringList& arguments,
                 const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment()) {
        QProcess child;
        child.setProcessEnvironment(env);
        QSignalSpy finished(&child, &QProcess::finished);
        child.start(QCoreApplication::applicationFilePath(), arguments);
        // The event loop runs meanwhile, so a call from the child to this process is answered.
        if (finished.isEmpty() && !finished.wait(15000))
            return -2;
        return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1;
    }

    QTemporaryDir work;
    QDBusConnection other =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("other"));
    std::unique_ptr<SingleInstance> primary;
    std::unique_ptr<QWidget> window;
};

int main(int argc, char** argv) {
    if (argc > 1 && (qstrcmp(argv[1], secondLaunchRole) == 0 || qstrcmp(argv[1], primaryRole) == 0))
        return playRole(argc, argv);
    QApplication app(argc, argv);
    TestSingleInstance test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_singleinstance.moc"
