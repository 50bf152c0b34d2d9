#pragma once

#include <QByteArray>
#include <QList>

/// What the last request set on its handle of the real libcurl. Nothing is sent: a program that links this
/// has transfers that end at once.
struct RecordedTransfer {
    QByteArray url;
    QByteArray customMethod;
    QList<QByteArray> headers;
    QByteArray body;
    bool isGet = false;
    bool isPost = false;
    bool hasBody = false;
    /// What libcurl answered to the first option that it refused; 0 when it took them all.
    int refusal = 0;
    int performed = 0;

    static RecordedTransfer &last();
};
