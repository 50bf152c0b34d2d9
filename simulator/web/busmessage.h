#pragma once

#include <QJsonArray>
#include <QString>

struct DBusMessage;

/// One message that passed on a bus.
struct BusMessage {
    enum class Type { Call, Answer, Error, Signal };

    Type type = Type::Signal;
    /// The unique name of the connection that sent it.
    QString sender;
    /// Empty for a signal to everybody.
    QString destination;
    QString path;
    QString interface;
    QString member;
    QString errorName;
    /// The sender's number of this message, and for an answer that of the call.
    quint32 serial = 0;
    quint32 replySerial = 0;
    /// Of a call: whether the sender waits for an answer.
    bool isAnswerWanted = true;
    /// Structures and arrays are arrays, maps are objects, bytes are a string of their hexadecimal digits.
    QJsonArray arguments;

    /// Nothing of @p message is kept.
    static BusMessage read(DBusMessage *message);
};
