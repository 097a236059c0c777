#include "platform/FileUrl.h"
#include "platform/SingleInstance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
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

QDBusMessage interfaceCall(const QString& method) {
    return QDBusMessage::createMethodCall(SingleInstance::serviceName, SingleInstance::objectPath,
                                          QStringLiteral("org.freedesktop.Application"), method);
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
    }
    void cleanup() {
        primary.reset();
        window.reset();
    }
    void cleanupTestCase() { QDBusConnection::disconnectFromBus(other.name()); }

    void withoutARunningProgramALaunchRunsAlone() {
        QCOMPARE(runChild({secondLaunchRole, "/srv"}), notForwarded);
        QVERIFY(!SingleInstance::forwardIfRunning({"/srv"}));
    }

    void laterLaunchHandsOverItsArguments() {
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        // The shell puts in a name whose bytes are not UTF-8.
        QProcess child;
        child.setWorkingDirectory(work.path());
        child.start(QStringLiteral("/bin/sh"),
                    {"-c", R"sh(exec "$0" --as-second-launch "$1" "$2" "$(printf 'caf\351')")sh",
                     QCoreApplication::applicationFilePath(), "/srv/My Files", "rel dir"});
        QVERIFY(opened.wait(15000));
        QVERIFY(child.waitForFinished(15000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(opened.size(), 1);
        const QList<QUrl> urls = opened[0][0].value<QList<QUrl>>();
        QList<QByteArray> paths;
        for (const QUrl& url : urls)
            paths << localPathBytes(url);
        const QByteArray base = QFile::encodeName(work.path());
        QCOMPARE(paths, (QList<QByteArray>{"/srv/My Files", base + "/rel dir", base + "/caf\xe9"}));
        QVERIFY(window->isVisible());
    }

    void laterLaunchWithoutArgumentsBringsTheWindowForward() {
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {secondLaunchRole});
        QTRY_VERIFY_WITH_TIMEOUT(child.state() == QProcess::NotRunning, 15000);
        QCOMPARE(child.exitCode(), 0);
        QVERIFY(window->isVisible());
        QCOMPARE(opened.size(), 0);
    }

    // The launcher's token comes along, so the window may take the focus for it.
    void activationTokenComesAlong() {
        startPrimary();
        qunsetenv("XDG_ACTIVATION_TOKEN");
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("launch-42"));
        QCOMPARE(runChild({secondLaunchRole, "/srv"}, env), 0);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("launch-42"));
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void theNameHasOneOwner() {
        startPrimary();
        QCOMPARE(runChild({primaryRole}), notRegistered);
        SingleInstance second;
        QVERIFY(!second.registerPrimary());
        QCOMPARE(other.interface()->serviceOwner(SingleInstance::serviceName).value(), ownName());
    }

    void theNameIsReleasedWithTheInstance() {
        startPrimary();
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

    void onlyLocalFilesAreOpened() {
        startPrimary();
        QSignalSpy opened(primary.get(), &SingleInstance::openRequested);
        QDBusMessage open = interfaceCall(QStringLiteral("Open"));
        open << QStringList{"https://example.org/", "file:///srv/a", "file:///srv/b"}
             << QVariantMap();
        QDBusPendingCall call = other.asyncCall(open);
        QTRY_VERIFY(call.isFinished());
        QVERIFY(!call.isError());
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0][0].value<QList<QUrl>>(),
                 (QList<QUrl>{QUrl("file:///srv/a"), QUrl("file:///srv/b")}));

        QDBusMessage webOnly = interfaceCall(QStringLiteral("Open"));
        webOnly << QStringList{"https://example.org/"} << QVariantMap();
        QDBusPendingCall second = other.asyncCall(webOnly);
        QTRY_VERIFY(second.isFinished());
        QVERIFY(!second.isError());
        QCOMPARE(opened.size(), 1);
    }

    void actionsAreRefused() {
        startPrimary();
        QDBusMessage action = interfaceCall(QStringLiteral("ActivateAction"));
        action << QStringLiteral("about") << QVariantList() << QVariantMap();
        QDBusPendingCall call = other.asyncCall(action);
        QTRY_VERIFY(call.isFinished());
        QVERIFY(call.isError());
        QCOMPARE(call.error().type(), QDBusError::InvalidArgs);
        QVERIFY(call.error().message().contains(QStringLiteral("about")));
    }

    void interfaceAsTheDesktopExpectsIt() {
        startPrimary();
        QDBusPendingReply<QString> xml = other.asyncCall(QDBusMessage::createMethodCall(
            SingleInstance::serviceName, SingleInstance::objectPath,
            QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect")));
        QTRY_VERIFY(xml.isFinished());
        QVERIFY(xml.isValid());
        const QString text = xml.value().simplified();
        QVERIFY(text.contains(QStringLiteral("<interface name=\"org.freedesktop.Application\">")));
        QVERIFY(text.contains(QStringLiteral("<method name=\"Activate\"> <arg "
                                             "name=\"platformData\" type=\"a{sv}\" "
                                             "direction=\"in\"/>")));
        QVERIFY(text.contains(QStringLiteral("<method name=\"Open\"> <arg name=\"uris\" "
                                             "type=\"as\" direction=\"in\"/> <arg "
                                             "name=\"platformData\" type=\"a{sv}\" "
                                             "direction=\"in\"/>")));
        QVERIFY(text.contains(QStringLiteral("<method name=\"ActivateAction\"> <arg name=\"name\" "
                                             "type=\"s\" direction=\"in\"/> <arg "
                                             "name=\"parameter\" type=\"av\" direction=\"in\"/>")));
    }

private:
    void startPrimary() {
        window = std::make_unique<QWidget>();
        primary = std::make_unique<SingleInstance>();
        primary->setWindow(window.get());
        QVERIFY(primary->registerPrimary());
    }

    QString ownName() const { return QDBusConnection::sessionBus().baseService(); }

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
