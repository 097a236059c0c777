// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// A small client of the accessibility bus (AT-SPI), reading what a screen reader reads
// of another program: names, roles, positions, and where the focus goes.
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDebug>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>
#include <QTest>

struct AtSpiObject {
    QString service;
    QString path;
    bool isValid() const { return !service.isEmpty() && !path.isEmpty(); }
};

class AtSpiBus {
public:
    // The session's accessibility bus, started by the session bus on first request.
    bool connect() {
        QDBusMessage call = QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus",
                                                           "org.a11y.Bus", "GetAddress");
        const QDBusReply<QString> address = QDBusConnection::sessionBus().call(call);
        if (!address.isValid())
            return false;
        busAddress = address.value();
        bus = QDBusConnection::connectToBus(busAddress, "atspi-client");
        return bus.isConnected();
    }
    ~AtSpiBus() {
        monitor.kill();
        monitor.waitForFinished();
        QDBusConnection::disconnectFromBus("atspi-client");
    }

    static AtSpiObject desktop() {
        return {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
    }

    QString name(const AtSpiObject& object) { return property(object, "Name").toString(); }
    QString description(const AtSpiObject& object) {
        return property(object, "Description").toString();
    }
    // All of an object's text, as a screen reader reads it.
    QString text(const AtSpiObject& object) {
        const QDBusMessage reply =
            call(object, "org.a11y.atspi.Text", "GetText", {QVariant(0), QVariant(-1)});
        return reply.arguments().value(0).toString();
    }
    // The window is the one the keyboard goes to.
    bool isActive(const AtSpiObject& object) {
        const QDBusMessage reply = call(object, "org.a11y.atspi.Accessible", "GetState");
        const QDBusArgument words = reply.arguments().value(0).value<QDBusArgument>();
        QList<uint> states;
        words >> states;
        constexpr uint active = 1u << 1; // ATSPI_STATE_ACTIVE
        return !states.isEmpty() && (states.first() & active);
    }
    QString role(const AtSpiObject& object) {
        const QDBusMessage reply = call(object, "org.a11y.atspi.Accessible", "GetRoleName");
        return reply.arguments().value(0).toString();
    }
    QList<AtSpiObject> children(const AtSpiObject& object) {
        const QDBusMessage reply = call(object, "org.a11y.atspi.Accessible", "GetChildren");
        QList<AtSpiObject> found;
        if (reply.arguments().isEmpty())
            return found;
        const QDBusArgument list = reply.arguments().first().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd())
            found << readReference(list);
        list.endArray();
        return found;
    }
    AtSpiObject parent(const AtSpiObject& object) {
        const QVariant value = property(object, "Parent");
        return readReference(value.value<QDBusArgument>());
    }
    // On screen, in the screen's coordinates.
    QRect extents(const AtSpiObject& object) {
        const QDBusMessage reply =
            call(object, "org.a11y.atspi.Component", "GetExtents", {QVariant::fromValue(0u)});
        if (reply.arguments().isEmpty())
            return {};
        const QDBusArgument box = reply.arguments().first().value<QDBusArgument>();
        int x = 0, y = 0, width = 0, height = 0;
        box.beginStructure();
        box >> x >> y >> width >> height;
        box.endStructure();
        return {x, y, width, height};
    }

    // The first object below from, breadth first, with that role and name.
    AtSpiObject find(const AtSpiObject& from, const QString& wantedRole, const QString& wantedName,
                     int depth = 12) {
        QList<AtSpiObject> level{from};
        for (int i = 0; i < depth && !level.isEmpty(); ++i) {
            QList<AtSpiObject> next;
            for (const AtSpiObject& object : std::as_const(level)) {
                if (role(object) == wantedRole && name(object) == wantedName)
                    return object;
                next << children(object);
            }
            level = next;
        }
        return {};
    }

    // From now on the focus changes of every program are followed: the programs are
    // told someone listens, and a monitor records the events.
    bool followFocus() {
        QDBusMessage registration =
            QDBusMessage::createMethodCall("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                           "org.a11y.atspi.Registry", "RegisterEvent");
        registration << QString("focus:") << QStringList() << QString();
        const QDBusMessage registered = bus.call(registration, QDBus::Block, 10000);
        if (registered.type() == QDBusMessage::ErrorMessage) {
            qWarning() << "cannot follow the focus:" << registered.errorMessage();
            return false;
        }
        monitor.start("dbus-monitor",
                      {"--address", busAddress,
                       "type='signal',interface='org.a11y.atspi.Event.Focus',member='Focus'"});
        return monitor.waitForStarted();
    }

    // The object that most recently got the focus, once a new focus event has come.
    AtSpiObject nextFocus() {
        AtSpiObject focused;
        [[maybe_unused]] const bool came = QTest::qWaitFor(
            [&] {
                pending += monitor.readAllStandardOutput();
                qsizetype end = 0;
                while ((end = pending.indexOf('\n')) >= 0) {
                    const QByteArray line = pending.left(end);
                    pending.remove(0, end + 1);
                    if (!line.startsWith("signal "))
                        continue;
                    focused.service = field(line, "sender");
                    focused.path = field(line, "path");
                }
                return focused.isValid();
            },
            10000);
        return focused;
    }

private:
    // The value after " key=" in a line of dbus-monitor, up to a blank or a semicolon.
    static QString field(const QByteArray& line, const char* key) {
        return QRegularExpression(QStringLiteral(" %1=([^ ;]+)").arg(QLatin1String(key)))
            .match(QString::fromLatin1(line))
            .captured(1);
    }

    static AtSpiObject readReference(const QDBusArgument& argument) {
        AtSpiObject object;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> object.service >> path;
        argument.endStructure();
        object.path = path.path();
        return object;
    }

    QDBusMessage call(const AtSpiObject& object, const QString& interface, const QString& method,
                      const QVariantList& args = {}) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(object.service, object.path, interface, method);
        message.setArguments(args);
        return bus.call(message, QDBus::Block, 5000);
    }

    QVariant property(const AtSpiObject& object, const QString& name) {
        const QDBusMessage reply = call(object, "org.freedesktop.DBus.Properties", "Get",
                                        {QString("org.a11y.atspi.Accessible"), name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

    QDBusConnection bus{QString()};
    QString busAddress;
    QProcess monitor;
    QByteArray pending;
};
