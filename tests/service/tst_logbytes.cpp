#include "log.h"
#include "platformlog.h"

#include <QString>
#include <QtTest>

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

// A line is formatted into a buffer of this size, and the platform's writer may look at all of it.
constexpr std::size_t lineSize = 255;

QByteArray givenTag;
std::array<char, lineSize> givenLine;

// Leaves something else than zeros where the next call has its buffer.
[[gnu::noinline]] void fillTheStack()
{
    std::array<volatile char, 8192> used;
    std::fill(used.begin(), used.end(), 'x');
}

} // namespace

// In place of the platform's writer: keeps the bytes behind the text too.
int __android_log_write(int /*priority*/, const char *tag, const char *text)
{
    givenTag = tag;
    std::memcpy(givenLine.data(), text, lineSize);
    return 1;
}

/// The very bytes that the platform's writer is handed.
class TestLogBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesBehindTheText_areZero();
    void tag_isInTheLocalEncoding();
};

void TestLogBytes::bytesBehindTheText_areZero()
{
    const QByteArray text = "a line";

    fillTheStack();
    logInfo("%s", text.constData());

    QCOMPARE(QByteArray(givenLine.data(), lineSize), text + QByteArray(lineSize - text.size(), '\0'));
}

void TestLogBytes::tag_isInTheLocalEncoding()
{
    const char tag[] = "T\xe4g";

    logSetTag(tag);
    logInfo("a line");

    const QByteArray expected = QString::fromLatin1(tag).toLocal8Bit();
    QVERIFY(expected != tag);
    QCOMPARE(givenTag, expected);
}

int main(int argc, char *argv[])
{
    qputenv("LC_ALL", "C.UTF-8"); // not the encoding that the tag is read in

    QCoreApplication application(argc, argv);
    TestLogBytes test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_logbytes.moc"
