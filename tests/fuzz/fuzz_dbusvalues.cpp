// D-Bus values: what a program writes through the proxies, what a service sends, how both are read, and that
// what was read can be written again.

#include "dbusconversion.h"
#include "dbussamples.h"
#include "described.h"
#include "fuzzing.h"
#include "localservice.h"
#include "shapes/argument.h"

#include <QCoreApplication>

using VorletProxiesPrivate::Argument::map;

namespace
{

constexpr int room = 60; // containers in one another
constexpr int depth = 4;

LocalService *service = nullptr;

// Written through the proxies.
QDBusArgument written(const QVariantMap &values)
{
    const QDBusArgument arrived = service->carry(map(values));
    require(arrived.currentType() == QDBusArgument::MapType, "what the proxies write arrives as a map");
    return arrived;
}

void requireReadings(const QDBusArgument &arrived, const DBusSample &sample)
{
    requireEqual(described(QVariant::fromValue(arrived)), sample.raw, "what arrives");
    requireEqual(described(readDBusEntries(arrived)), sample.raw, "what arrives, by its entries");
    requireEqual(described(convertDBusArgument(arrived)), sample.kept, "what is read, arrays nested");
    requireEqual(described(parseDBusMap(arrived)), sample.flat, "what is read, arrays flat");
    requireEqual(described(QVariant::fromValue(arrived)), sample.raw, "what arrived can be read once more");
}

// What came over the bus goes back over it as it came.
void requireWayBack(const QDBusArgument &arrived, const DBusSample &sample)
{
    requireEqual(described(QVariant::fromValue(written(readDBusEntries(arrived)))), sample.raw,
                 "what was received, sent on");
}

// Decoded, some of it is left out, such as structures; what is left stays.
template <typename Reader>
void requireSettled(const QDBusArgument &arrived, Reader read)
{
    const QVariantMap once = read(written(read(arrived)));
    const QVariantMap twice = read(written(once));
    requireEqual(described(twice), described(once), "what was read and written, read and written again");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argumentCount, char ***arguments)
{
    static QCoreApplication application(*argumentCount, *arguments);
    static LocalService local;
    service = &local;
    require(local.start(), "there is a bus");
    registerDBusContainers();
    // The readers complain of structures.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const bool isOfService = input.ConsumeBool();
    const bool isKept = input.ConsumeBool();
    const auto sender = isOfService ? DBusSamples::Sender::Service : DBusSamples::Sender::Program;
    const DBusSample sample = DBusSamples(input, sender).takeMap(room, depth);
    const QVariantMap values = sample.value.toMap();

    const QDBusArgument arrived = isOfService ? service->carry(values) : written(values);
    requireReadings(arrived, sample);
    requireWayBack(arrived, sample);
    if (isKept) {
        requireSettled(arrived, [](const QDBusArgument &each) { return convertDBusArgument(each).toMap(); });
    } else {
        requireSettled(arrived, parseDBusMap);
    }
    return 0;
}
