#include "windowmanager/apearanceproxy.h"

#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"widget.manager"};
const QLatin1String objectPath{"/apearance"};
const QLatin1String interfaceName{"com.vorlet.widget_manager.apearance"};
} // namespace

namespace WindowManager
{

namespace
{
// Made once, when the program starts.
namespace Name
{
const QString setCurrentScrollType = QStringLiteral("setCurrentScrollType");
const QString setSpeedForScrollType = QStringLiteral("setSpeedForScrollType");
const QString setCurrentScrollTypeAndParams = QStringLiteral("setCurrentScrollTypeAndParams");
const QString scrollSpeedForType = QStringLiteral("scrollSpeedForType");
const QString currentScrollType = QStringLiteral("currentScrollType");
const QString currentScrollTypeInfo = QStringLiteral("currentScrollTypeInfo");
const QString scrollTypeInfo = QStringLiteral("scrollTypeInfo");
const QString scrollTypeInfos = QStringLiteral("scrollTypeInfos");
const QString currentScrollTypeChanged = QStringLiteral("currentScrollTypeChanged");
const QString scrollSpeedForTypeChanged = QStringLiteral("scrollSpeedForTypeChanged");
} // namespace Name
} // namespace

ApearanceProxy::ApearanceProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void ApearanceProxy::setCurrentScrollType(const QString &type, QDBus::CallMode mode) { call(mode, Name::setCurrentScrollType, type); }
void ApearanceProxy::setSpeedForScrollType(const QString &type, double speed, QDBus::CallMode mode) { call(mode, Name::setSpeedForScrollType, type, speed); }
void ApearanceProxy::setCurrentScrollTypeAndParams(const QString &type, const QVariantMap &parameters, QDBus::CallMode mode) { call(mode, Name::setCurrentScrollTypeAndParams, type, Argument::map(parameters)); }

double ApearanceProxy::scrollSpeedForType(const QString &type, QDBus::CallMode mode) { return Reply::value<double>(call(mode, Name::scrollSpeedForType, type)); }
QString ApearanceProxy::currentScrollType(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, Name::currentScrollType)); }
QVariantMap ApearanceProxy::currentScrollTypeInfo(QDBus::CallMode mode) { return Reply::map(call(mode, Name::currentScrollTypeInfo)); }
QVariantMap ApearanceProxy::scrollTypeInfo(const QString &type, QDBus::CallMode mode) { return Reply::map(call(mode, Name::scrollTypeInfo, type)); }
QVariantList ApearanceProxy::scrollTypeInfos(QDBus::CallMode mode) { return Reply::list(call(mode, Name::scrollTypeInfos)); }

bool ApearanceProxy::connectCurrentScrollTypeChanged(QObject *receiver, const char *slot) { return subscribe(*this, Name::currentScrollTypeChanged, receiver, slot); }
bool ApearanceProxy::disconnectCurrentScrollTypeChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::currentScrollTypeChanged, receiver, slot); }
bool ApearanceProxy::connectScrollSpeedForTypeChanged(QObject *receiver, const char *slot) { return subscribe(*this, Name::scrollSpeedForTypeChanged, receiver, slot); }
bool ApearanceProxy::disconnectScrollSpeedForTypeChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::scrollSpeedForTypeChanged, receiver, slot); }

} // namespace WindowManager
