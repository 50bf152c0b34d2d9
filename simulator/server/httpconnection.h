#pragma once

#include "httpanswer.h"
#include "requestreader.h"

#include <QObject>

class QTcpSocket;

/// One client's connection: takes its requests one after the other, and sends what they are answered with.
class HttpConnection : public QObject
{
    Q_OBJECT
public:
    /// Takes @p socket over, which is connected or, with TLS, about to shake hands.
    /// A request with a body of more than @p largestBody bytes is none.
    HttpConnection(QTcpSocket *socket_, int largestBody, QObject *parent = nullptr);
    ~HttpConnection() override;

    /// Answers the request that came last; how long it is to be held back is the caller's matter. The next
    /// one is taken once this is sent, if the connection is kept open.
    void send(const HttpAnswer &answer);
    /// Sends what a streamed answer has now, unless the client has not taken the last of it yet.
    void goOn();
    /// Closes at once, whatever is under way.
    void cutOff();

Q_SIGNALS:
    /// A request is whole. There is none after it before send().
    void received(const HttpRequest &request);
    void handshakeFailed(const QString &reason);
    /// The connection is closed, by whichever side.
    void closed();

private:
    void checkHandshake();
    void readWhatIsThere();
    void takeRequest();
    bool isAllSent() const;
    void endAs(HttpAnswer::Ending how);
    void reset();

    QTcpSocket *const socket;
    RequestReader reader;
    HttpAnswer::Ending ending = HttpAnswer::Ending::KeepOpen;
    QByteArray repeated;
    std::function<QByteArray()> source;
    bool isAwaitingAnswer = false;
    bool isSending = false;
    bool hasFailed = false;
};
