#pragma once

#include <QDBusInterface>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

/// What a member puts on the bus and what it makes of the answer.
enum class Shape {
    Command,
    Text,
    Flag,
    Number,
    LongNumber,
    Real,
    SmallReal,
    Texts,
    Json,
    JsonMap,
    JsonIntegers,
    JsonList,
    DeviceState,
    Map,
    List,
    Entries,
    ConvertedTexts,
    ConvertedList,
    ConvertedMap,
    Asynchronous,
};

/// One member: the call that must reach the service, and how to make it.
struct Member {
    const char *name;
    Shape shape;
    const char *signature;
    QVariantList arguments;
    std::function<QVariant()> invoke;
    /// What a logging getter writes before the error's message; null for every other member.
    const char *errorLine = nullptr;
};

/// One signal and the pair of members under which it is subscribed.
struct Subscription {
    const char *signal;
    QVariantList arguments;
    std::function<bool(QObject *, const char *)> connect;
    std::function<bool(QObject *, const char *)> disconnect;
};

/// One proxy class with everything it offers.
struct ProxyTable {
    const char *className;
    std::shared_ptr<QDBusInterface> proxy;
    std::vector<Member> members;
    std::vector<Subscription> subscriptions;
};

/// The tables of all classes, their proxies made on @p connection.
std::vector<ProxyTable> everyProxyTable(const QDBusConnection &connection);

/// The values that the tables send; each kind has one, texts have several so that a mixed-up order shows.
namespace Sample
{
const QString text = QStringLiteral("text");
const QString second = QStringLiteral("second text");
const QString third = QStringLiteral("third text");
constexpr bool flag = true;
constexpr int number = -7;
constexpr qlonglong longNumber = Q_INT64_C(5000000000);
constexpr double real = 0.25;
const QStringList texts{QStringLiteral("one"), QStringLiteral("two")};
const QVariantMap map{{QStringLiteral("key"), 7}};
const QVariantList list{7, QStringLiteral("seven")};
const QByteArray bytes("bytes\0", 6);
/// A value for a JSON command, and its text on the bus.
const QVariant json = QVariantMap{{QStringLiteral("key"), QVariantList{1, QStringLiteral("\u00e9"), true}}};
const QByteArray jsonText = QByteArrayLiteral("{\"key\":[1,\"\xc3\xa9\",true]}");
} // namespace Sample

/// Turns a member's call into one that returns any result as a QVariant: nothing as an invalid one, an
/// asynchronous call as its finished reply's first argument.
template <typename Call>
std::function<QVariant()> returning(Call call)
{
    return [call]() -> QVariant {
        using Result = decltype(call());
        if constexpr (std::is_void_v<Result>) {
            call();
            return {};
        } else if constexpr (std::is_same_v<Result, QDBusPendingCall>) {
            QDBusPendingCall pending = call();
            pending.waitForFinished();
            return pending.reply().type() == QDBusMessage::ReplyMessage ? pending.reply().arguments().value(0)
                                                                        : QVariant();
        } else {
            return QVariant::fromValue(call());
        }
    };
}

/// The pair of members for one signal of @p proxy.
template <typename Proxy>
Subscription subscription(const char *signal, const QVariantList &arguments, std::shared_ptr<Proxy> proxy,
                          bool (Proxy::*connect)(QObject *, const char *),
                          bool (Proxy::*disconnect)(QObject *, const char *))
{
    return {signal, arguments,
            [proxy, connect](QObject *receiver, const char *slot) {
                return (proxy.get()->*connect)(receiver, slot);
            },
            [proxy, disconnect](QObject *receiver, const char *slot) {
                return (proxy.get()->*disconnect)(receiver, slot);
            }};
}
