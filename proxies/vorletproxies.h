#pragma once

/// Every proxy of the device's services in one include.
///
///     #include <vorletproxies.h>
///
///     Daemon::GeneralProxy device(&application, QDBusConnection::systemBus());
///     const QString serial = device.serial(QDBus::Block);        // waits; null when the service fails
///     device.setName(QStringLiteral("kitchen"), QDBus::NoBlock); // sends and goes on
///     device.connectNameChanged(&label, SLOT(setText(QString))); // the slot takes what the signal carries
///
/// Calls. QDBus::Block waits for the reply, by default up to 25 s; QDBus::NoBlock sends and returns at once, so that a
/// getter called with it gives the empty value of its result. An error, too, gives the empty value; lastError() shows
/// the difference. A member that takes no mode and returns a QDBusPendingCall leaves the reply to the caller. Use a
/// proxy from the thread that made it.
///
/// Maps. A member that takes a QVariantMap sends each value in a form that D-Bus carries: JSON values by what they
/// stand for, maps and lists of a type that D-Bus does not know as maps and lists of variants, float as double, a QUrl
/// and the like as a string. It leaves out what has no such form: invalid and null values, empty object paths and
/// signatures, closed descriptors, a typed list or map that holds one of these (a QList<QDBusObjectPath>, say), and
/// whatever lies in more than 60 containers. It also leaves out a registered type of the program's own that writes
/// variants, object paths, signatures or descriptors; written into a finished QDBusArgument, all but variants are sent.
/// What a getter gave can be changed and sent again, an undecoded structure included.
///
/// Making a proxy asks the service for nothing and does not start it. There is one exception: in a program that has
/// exported an object tree with its children (QDBusConnection::ExportChildObjects) or one object for every path at "/"
/// or above /com/vorlet/proxies on the same connection, the constructor asks the service to describe itself, starts it
/// if need be, and waits for the answer. Elsewhere the connection has then learned that the interface has no members:
/// a plain QDBusInterface made later for it on that connection finds none through its meta-object, so that connect()
/// with a SIGNAL() of the service fails there; its call() works as ever.

#include "btnotifications/btnotificationsproxy.h"
#include "daemon/audioproxy.h"
#include "daemon/batteryproxy.h"
#include "daemon/bluetoothproxy.h"
#include "daemon/brigntnessproxy.h"
#include "daemon/clockproxy.h"
#include "daemon/crashlogsproxy.h"
#include "daemon/filesystemproxy.h"
#include "daemon/generalproxy.h"
#include "daemon/lightsensorproxy.h"
#include "daemon/networkproxy.h"
#include "daemon/oomkillerproxy.h"
#include "daemon/packagemanagerproxy.h"
#include "daemon/restserverproxy.h"
#include "daemon/screensaverproxy.h"
#include "daemon/setupproxy.h"
#include "daemon/soundnotificationproxy.h"
#include "mqttclient/generalproxy.h"
#include "spotify/clientproxy.h"
#include "windowmanager/apearanceproxy.h"
#include "windowmanager/dynamicwidgetpropertiesproxy.h"
#include "windowmanager/generalproxy.h"
#include "windowmanager/notificationsproxy.h"
#include "windowmanager/sharedscreenproxy.h"
