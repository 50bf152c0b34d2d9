#include "messagecapture.h"

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>

namespace
{
using Message = QPair<QtMsgType, QString>;

QMutex mutex;
QList<Message> captured;

void capture(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text)
{
    const QMutexLocker locker(&mutex);
    captured.append({type, text});
}
} // namespace

MessageCapture::MessageCapture()
    : previous(qInstallMessageHandler(capture))
{
    clear();
}

MessageCapture::~MessageCapture()
{
    qInstallMessageHandler(previous);
}

QList<QPair<QtMsgType, QString>> MessageCapture::messages() const
{
    const QMutexLocker locker(&mutex);
    return captured;
}

QStringList MessageCapture::debugTexts() const
{
    QStringList texts;
    const QList<Message> all = messages();
    for (const Message &message : all) {
        if (message.first == QtDebugMsg) {
            texts.append(message.second);
        }
    }
    return texts;
}

void MessageCapture::clear()
{
    const QMutexLocker locker(&mutex);
    captured.clear();
}
