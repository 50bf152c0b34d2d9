#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

/// The header of an HTTP response: its status line and its fields, in the order received. A value class:
/// copies are independent.
class QHttpResponseHeader
{
public:
    /// An invalid header without fields.
    QHttpResponseHeader();
    /// Parses the text of a response header. Where the text holds several (a redirect or an interim answer
    /// leaves one each), the last one counts. The result is invalid when that one does not begin with a
    /// status line.
    explicit QHttpResponseHeader(const QString &text);

    bool isValid() const;
    int statusCode() const;
    QString reasonPhrase() const;
    int majorVersion() const;
    int minorVersion() const;
    /// Replaces the status line and makes the header valid; the fields stay.
    void setStatusLine(int code, const QString &reason = QString(), int major = 1, int minor = 1);

    /// Whether a field of this name is there; names are compared without regard to case.
    bool hasKey(const QString &name) const;
    /// The value of the first field of this name, or a null string.
    QString value(const QString &name) const;
    /// The values of all fields of this name, in their order.
    QStringList allValues(const QString &name) const;
    /// The names of all fields, in their order.
    QStringList keys() const;

    /// The header as text: the status line, a line a field, and an empty line.
    QString toString() const;

private:
    bool parseStatusLine(const QString &line);
    void appendField(const QString &line);

    bool valid = false;
    int code = 0;
    int majorNumber = 1;
    int minorNumber = 1;
    QString reason;
    QList<QPair<QString, QString>> fields;
};
