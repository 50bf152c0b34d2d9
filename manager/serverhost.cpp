#include "serverhost.h"

#include "log.h"

#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <arpa/inet.h>

namespace
{

constexpr int longestHost = 253; // of a name in DNS

bool isAddress(int family, const QString &text)
{
    in6_addr address;
    return inet_pton(family, text.toLatin1().constData(), &address) == 1;
}

/// Whether a resolver takes a name for an address because of this part: 12, 0x7f.
bool isNumber(const QString &label)
{
    const bool isHex = label.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const QString allowed = isHex ? QStringLiteral("0123456789abcdefABCDEF") : QStringLiteral("0123456789");
    const QString digits = isHex ? label.mid(2) : label;
    return std::all_of(digits.cbegin(), digits.cend(), [&](QChar digit) { return allowed.contains(digit); });
}

/// Whether @p given, without its port, is the host that @p url contacts.
bool isContacted(const QString &given, const QUrl &url)
{
    const QString host = url.host(QUrl::FullyEncoded);
    if (given.startsWith(QLatin1Char('['))) {
        // Its zeros may be written in several ways.
        return given.endsWith(QLatin1Char(']')) && isAddress(AF_INET6, host);
    }
    if (host.isEmpty() || host.size() > longestHost || given.compare(host, Qt::CaseInsensitive) != 0) {
        return false;
    }
    const QString lastLabel = host.split(QLatin1Char('.'), Qt::SkipEmptyParts).constLast();
    return !isNumber(lastLabel) || isAddress(AF_INET, host);
}

QString readServerHost()
{
    QString host = qEnvironmentVariable("QWIXTD_SERVER_HOST");
    if (isHostName(host)) {
        return host;
    }
    if (!host.isEmpty()) {
        logWarning("QWIXTD: ignoring QWIXTD_SERVER_HOST: not a host name");
    }
    return QStringLiteral(QWIXTD_SERVER_HOST);
}

} // namespace

bool isHostName(const QString &text)
{
    const auto isRefused = [](QChar character) {
        return character >= QLatin1Char('\x7f') || QStringLiteral("/@?#").contains(character);
    };
    if (std::any_of(text.cbegin(), text.cend(), isRefused)) {
        return false;
    }
    const QUrl url(QStringLiteral("https://") + text); // without a host when it is not valid
    const QString port = url.port() == -1 ? QString() : QStringLiteral(":%1").arg(url.port());
    return url.port() != 0 && isContacted(text.chopped(port.size()), url);
}

QString serverHost()
{
    static const QString host = readServerHost();
    return host;
}
