#include "tracetext.h"

namespace
{
constexpr int longestShown = 400;

bool breaksLines(QChar character)
{
    return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

QString escaped(QChar character)
{
    switch (character.unicode()) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return QStringLiteral("\\u{%1}").arg(character.unicode(), 0, 16);
    }
}

QString bracketed(const QStringList &parts, const char *open, const char *close)
{
    return QLatin1String(open) + parts.join(QStringLiteral(", ")) + QLatin1String(close);
}
} // namespace

namespace TraceText
{

QString printable(const QString &text)
{
    QString shown;
    for (const QChar character : text.left(longestShown)) {
        if (breaksLines(character)) {
            shown += escaped(character);
        } else {
            shown += character;
        }
    }
    if (text.size() > longestShown) {
        shown += QStringLiteral("... (%1 characters)").arg(text.size());
    }
    return shown;
}

QString printable(const QByteArray &bytes)
{
    return printable(QString::fromUtf8(bytes));
}

QString quoted(const QString &text)
{
    QString inside = text;
    inside.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    inside.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + printable(inside) + QLatin1Char('"');
}

QString value(const QVariant &value)
{
    const int type = value.userType();
    if (type == QMetaType::QStringList || type == QMetaType::QVariantList) {
        QStringList parts;
        const QVariantList list = value.toList();
        for (const QVariant &element : list) {
            parts.append(TraceText::value(element));
        }
        return bracketed(parts, "[", "]");
    }
    if (type == QMetaType::QVariantMap) {
        QStringList parts;
        const QVariantMap map = value.toMap();
        for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
            parts.append(quoted(entry.key()) + QStringLiteral(": ") + TraceText::value(*entry));
        }
        return bracketed(parts, "{", "}");
    }
    return type == QMetaType::QString ? quoted(value.toString()) : printable(value.toString());
}

QString arguments(const QVariantList &values)
{
    QStringList parts;
    for (const QVariant &argument : values) {
        parts.append(value(argument));
    }
    return bracketed(parts, "(", ")");
}

QString arguments(const QStringList &texts)
{
    QVariantList values;
    for (const QString &text : texts) {
        values.append(text);
    }
    return arguments(values);
}

} // namespace TraceText
