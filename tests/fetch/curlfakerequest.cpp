#include "curlfake.h"

namespace CurlFake
{

bool Request::has(CURLoption option) const
{
    for (const Option &noted : options) {
        if (noted.option == option) {
            return true;
        }
    }
    return false;
}

long Request::number(CURLoption option) const
{
    for (const Option &noted : options) {
        if (noted.option == option) {
            return noted.number;
        }
    }
    return -1;
}

QByteArray Request::text(CURLoption option) const
{
    for (const Option &noted : options) {
        if (noted.option == option) {
            return noted.text;
        }
    }
    return QByteArray();
}

QByteArray Request::method() const
{
    if (has(CURLOPT_CUSTOMREQUEST)) {
        return text(CURLOPT_CUSTOMREQUEST);
    }
    return has(CURLOPT_COPYPOSTFIELDS) ? QByteArray("POST") : QByteArray("GET");
}

} // namespace CurlFake
