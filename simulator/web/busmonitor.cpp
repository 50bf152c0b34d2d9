#include "busmonitor.h"

#include <QSocketNotifier>

#include <dbus/dbus.h>

namespace
{
const char bus[] = "org.freedesktop.DBus";
constexpr int callTimeoutMs = 5000;
constexpr int mostAtOnce = 1000;

struct Unreference {
    void operator()(DBusMessage *message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unreference>;

// An error of the bus library that frees itself.
class Error
{
public:
    Error() { dbus_error_init(&error); }
    ~Error() { dbus_error_free(&error); }
    Q_DISABLE_COPY(Error)

    operator DBusError *() { return &error; }
    QString text() const { return QString::fromUtf8(error.message); }

private:
    DBusError error{};
};

Message callOfBus(const char *interface, const char *member)
{
    return Message(dbus_message_new_method_call(bus, "/org/freedesktop/DBus", interface, member));
}

Message answerTo(DBusConnection *connection, const Message &call, Error &error)
{
    return Message(dbus_connection_send_with_reply_and_block(connection, call.get(), callTimeoutMs, error));
}
} // namespace

void BusMonitor::Closer::operator()(DBusConnection *open) const
{
    dbus_connection_close(open);
    dbus_connection_unref(open);
}

BusMonitor::BusMonitor(QObject *parent)
    : QObject(parent)
{
}

BusMonitor::~BusMonitor() = default;

bool BusMonitor::start(const QString &busAddress)
{
    if (!connectTo(busAddress) || !learnOwners() || !becomeMonitor()) {
        notifier.reset();
        connection.reset();
        return false;
    }
    int descriptor = -1;
    dbus_connection_get_unix_fd(connection.get(), &descriptor);
    notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] { readWhatIsThere(); });
    // What came while the answer was awaited raises no notice.
    QMetaObject::invokeMethod(this, &BusMonitor::readWhatIsThere, Qt::QueuedConnection);
    return true;
}

QString BusMonitor::errorText() const
{
    return error;
}

void BusMonitor::readWhatIsThere()
{
    if (!connection) {
        return;
    }
    // A flood leaves the rest for the next turn of the event loop.
    for (int taken = 0; taken < mostAtOnce; ++taken) {
        dbus_connection_read_write(connection.get(), 0);
        const Message message(dbus_connection_pop_message(connection.get()));
        if (!message) {
            break;
        }
        take(BusMessage::read(message.get()));
    }
    if (dbus_connection_get_dispatch_status(connection.get()) == DBUS_DISPATCH_DATA_REMAINS) {
        QMetaObject::invokeMethod(this, &BusMonitor::readWhatIsThere, Qt::QueuedConnection);
    }
    if (dbus_connection_get_is_connected(connection.get()) == 0) {
        notifier->setEnabled(false);
    }
}

QStringList BusMonitor::namesOf(const QString &uniqueName) const
{
    return uniqueName.startsWith(QLatin1Char(':')) ? owners.keys(uniqueName) : QStringList{uniqueName};
}

bool BusMonitor::isOwned(const QString &wellKnownName) const
{
    return owners.contains(wellKnownName);
}

bool BusMonitor::connectTo(const QString &busAddress)
{
    Error problem;
    connection.reset(dbus_connection_open_private(busAddress.toUtf8().constData(), problem));
    if (!connection) {
        error = problem.text();
        return false;
    }
    dbus_connection_set_exit_on_disconnect(connection.get(), 0);
    if (dbus_bus_register(connection.get(), problem) == 0) {
        error = problem.text();
        return false;
    }
    return true;
}

// Follows the names from now on, and learns who owns them now.
bool BusMonitor::learnOwners()
{
    Error problem;
    dbus_bus_add_match(connection.get(),
                       "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged'", problem);
    const Message list = answerTo(connection.get(), callOfBus(bus, "ListNames"), problem);
    const QJsonArray names = list ? BusMessage::read(list.get()).arguments.at(0).toArray() : QJsonArray();
    for (const auto &value : names) {
        const QByteArray name = value.toString().toUtf8();
        const char *const text = name.constData();
        if (name.startsWith(':') || name == bus) {
            continue;
        }
        Error nobody;
        const Message question = callOfBus(bus, "GetNameOwner");
        dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
        if (const Message owner = answerTo(connection.get(), question, nobody)) {
            owners[value.toString()] = BusMessage::read(owner.get()).arguments.at(0).toString();
        }
    }
    error = problem.text();
    return list != nullptr;
}

bool BusMonitor::becomeMonitor()
{
    Error problem;
    const Message call = callOfBus("org.freedesktop.DBus.Monitoring", "BecomeMonitor");
    const char *const *const noRules = nullptr;
    const dbus_uint32_t noFlags = 0;
    dbus_message_append_args(call.get(), DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &noRules, 0, DBUS_TYPE_UINT32,
                             &noFlags, DBUS_TYPE_INVALID);
    const Message answer = answerTo(connection.get(), call, problem);
    error = problem.text();
    return answer != nullptr;
}

void BusMonitor::take(const BusMessage &message)
{
    if (message.sender == QLatin1String(bus) && message.member == QStringLiteral("NameOwnerChanged") &&
        message.type == BusMessage::Type::Signal) {
        setOwner(message.arguments.at(0).toString(), message.arguments.at(2).toString());
    }
    Q_EMIT passed(message);
}

void BusMonitor::setOwner(const QString &name, const QString &uniqueName)
{
    if (name.startsWith(QLatin1Char(':')) || owners.value(name) == uniqueName) {
        return;
    }
    if (uniqueName.isEmpty()) {
        owners.remove(name);
    } else {
        owners[name] = uniqueName;
    }
    Q_EMIT ownerChanged(name, !uniqueName.isEmpty());
}
