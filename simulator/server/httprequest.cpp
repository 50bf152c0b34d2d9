#include "httprequest.h"

QByteArray HttpRequest::header(const QByteArray &name) const
{
    for (const QPair<QByteArray, QByteArray> &candidate : headers) {
        if (candidate.first.compare(name, Qt::CaseInsensitive) == 0) {
            return candidate.second;
        }
    }
    return {};
}

QByteArray HttpRequest::firstLine() const
{
    return bytes.left(bytes.indexOf("\r\n"));
}
