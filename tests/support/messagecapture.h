#pragma once

#include <QList>
#include <QPair>
#include <QString>

/// Takes what is written to Qt's message channel while it lives, and hands it to nobody else. One at a time,
/// from the thread that made it.
class MessageCapture
{
public:
    MessageCapture();
    ~MessageCapture();
    Q_DISABLE_COPY(MessageCapture)

    QList<QPair<QtMsgType, QString>> messages() const;
    /// The texts of the debug messages, oldest first.
    QStringList debugTexts() const;
    void clear();

private:
    QtMessageHandler previous;
};
