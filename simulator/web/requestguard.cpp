#include "requestguard.h"

namespace
{
constexpr quint16 portOfHttp = 80;
} // namespace

QString RequestGuard::refusal(const HttpRequest &request, quint16 port)
{
    const QByteArray suffix = ':' + QByteArray::number(port);
    const QByteArray host = request.header("Host");
    QList<QByteArray> names{"127.0.0.1" + suffix, "localhost" + suffix};
    if (port == portOfHttp) {
        // A browser leaves it out.
        names << "127.0.0.1"
              << "localhost";
    }
    if (!names.contains(host)) {
        return QStringLiteral("this server is called 127.0.0.1%1").arg(QString::fromLatin1(suffix));
    }
    const QByteArray origin = request.header("Origin");
    if (!origin.isEmpty() && origin != "http://" + host) {
        return QStringLiteral("another origin may not ask");
    }
    // What a browser says of requests without Origin, such as those of an image.
    const QByteArray site = request.header("Sec-Fetch-Site");
    if (!site.isEmpty() && site != "same-origin" && site != "none") {
        return QStringLiteral("another site may not ask");
    }
    return {};
}
