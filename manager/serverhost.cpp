#include "serverhost.h"

#include "log.h"

#include <QUrl>

#include <algorithm>

namespace
{

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
        return character.isSpace() || character.category() == QChar::Other_Control ||
               QStringLiteral("/@?#").contains(character);
    };
    return !text.isEmpty() && std::none_of(text.cbegin(), text.cend(), isRefused) &&
           QUrl(QStringLiteral("https://") + text).isValid();
}

QString serverHost()
{
    static const QString host = readServerHost();
    return host;
}
