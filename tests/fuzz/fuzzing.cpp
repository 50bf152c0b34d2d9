#include "fuzzing.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace
{

[[noreturn]] void end(const char *what, const QByteArray &more)
{
    std::fprintf(stderr, "does not hold: %s%s\n", what, more.constData());
    std::abort();
}

} // namespace

// Stands in for the platform's log writer.
extern "C" int __android_log_write(int /*priority*/, const char * /*tag*/, const char * /*text*/)
{
    return 1;
}

void require(bool holds, const char *what)
{
    if (!holds) {
        end(what, {});
    }
}

void requireEqual(const QString &is, const QString &mustBe, const char *what)
{
    if (is != mustBe) {
        requireEqual(is.toUtf8(), mustBe.toUtf8(), what);
        end(what, " (in UTF-8 they are equal)");
    }
}

void requireEqual(const QByteArray &is, const QByteArray &mustBe, const char *what)
{
    if (is != mustBe) {
        end(what, "\n  is      [" + is.toPercentEncoding(" /:;=&,.{}()[]\"'<>@!?*+\\") + "]\n  must be [" +
                      mustBe.toPercentEncoding(" /:;=&,.{}()[]\"'<>@!?*+\\") + "]");
    }
}

void requireEqual(qint64 is, qint64 mustBe, const char *what)
{
    if (is != mustBe) {
        requireEqual(QByteArray::number(is), QByteArray::number(mustBe), what);
    }
}

QByteArray takeBytes(FuzzedDataProvider &input, int longest)
{
    return QByteArray::fromStdString(input.ConsumeRandomLengthString(static_cast<std::size_t>(longest)));
}

QString takeText(FuzzedDataProvider &input, int longest)
{
    const QByteArray bytes = takeBytes(input, longest);
    // The size is named, because Qt 5 would read it up to its first zero byte.
    return QString::fromUtf8(bytes.constData(), static_cast<int>(bytes.size()));
}

QByteArray takeRest(FuzzedDataProvider &input)
{
    return QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());
}
