#include "qhttpresponseheader.h"

#include <QRegularExpression>
#include <QStringList>

namespace
{

/// The lines of the last header in @p text, without line ends. What follows its empty line is no header of
/// its own but the trailer of its body.
QStringList lastBlock(const QString &text)
{
    QStringList block;
    bool ended = false;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (QString line : lines) {
        if (line.endsWith(QLatin1Char('\r'))) {
            line.chop(1);
        }
        if (ended && line.startsWith(QLatin1String("HTTP/"))) {
            block.clear();
            ended = false;
        }
        ended = ended || line.isEmpty();
        if (!ended) {
            block.append(line);
        }
    }
    return block;
}

} // namespace

QHttpResponseHeader::QHttpResponseHeader() = default;

QHttpResponseHeader::QHttpResponseHeader(const QString &text)
{
    const QStringList lines = lastBlock(text);
    if (lines.isEmpty()) {
        return;
    }
    valid = parseStatusLine(lines.first());
    for (int i = 1; i < lines.size(); ++i) {
        appendField(lines.at(i));
    }
}

bool QHttpResponseHeader::parseStatusLine(const QString &line)
{
    // HTTP/2 has neither a minor version nor a reason.
    static const QRegularExpression form(QStringLiteral("^HTTP/(\\d)(?:\\.(\\d))? ([1-9]\\d{2})(?: (.*))?$"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch()) {
        return false;
    }
    majorNumber = match.captured(1).toInt();
    minorNumber = match.captured(2).toInt();
    code = match.captured(3).toInt();
    reason = match.captured(4);
    return true;
}

void QHttpResponseHeader::appendField(const QString &line)
{
    const bool continuesTheLastValue = line.at(0) == QLatin1Char(' ') || line.at(0) == QLatin1Char('\t');
    if (continuesTheLastValue) {
        if (!fields.isEmpty()) {
            QString &value = fields.last().second;
            value = (value + QLatin1Char(' ') + line.trimmed()).trimmed(); // either may be empty
        }
        return;
    }
    const auto colon = line.indexOf(QLatin1Char(':'));
    const QString name = line.left(colon).trimmed();
    if (colon > 0 && !name.isEmpty()) {
        fields.append({name, line.mid(colon + 1).trimmed()});
    }
}

bool QHttpResponseHeader::isValid() const
{
    return valid;
}

int QHttpResponseHeader::statusCode() const
{
    return code;
}

QString QHttpResponseHeader::reasonPhrase() const
{
    return reason;
}

int QHttpResponseHeader::majorVersion() const
{
    return majorNumber;
}

int QHttpResponseHeader::minorVersion() const
{
    return minorNumber;
}

void QHttpResponseHeader::setStatusLine(int newCode, const QString &newReason, int major, int minor)
{
    valid = true;
    code = newCode;
    reason = newReason;
    majorNumber = major;
    minorNumber = minor;
}

bool QHttpResponseHeader::hasKey(const QString &name) const
{
    return !allValues(name).isEmpty();
}

QString QHttpResponseHeader::value(const QString &name) const
{
    return allValues(name).value(0);
}

QStringList QHttpResponseHeader::allValues(const QString &name) const
{
    QStringList values;
    for (const auto &field : fields) {
        if (field.first.compare(name, Qt::CaseInsensitive) == 0) {
            values.append(field.second);
        }
    }
    return values;
}

QStringList QHttpResponseHeader::keys() const
{
    QStringList names;
    for (const auto &field : fields) {
        names.append(field.first);
    }
    return names;
}

QString QHttpResponseHeader::toString() const
{
    if (!valid) {
        return QString();
    }
    QString text = QStringLiteral("HTTP/%1.%2 %3 ").arg(majorNumber).arg(minorNumber).arg(code) + reason +
                   QStringLiteral("\r\n");
    for (const auto &field : fields) {
        text += field.first + QStringLiteral(": ") + field.second + QStringLiteral("\r\n");
    }
    return text + QStringLiteral("\r\n");
}
