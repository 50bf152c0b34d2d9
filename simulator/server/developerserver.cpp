#include "developerserver.h"

DeveloperServer::DeveloperServer(QObject *parent)
    : HttpServer(parent)
{
}

void DeveloperServer::setApiKey(const QString &key)
{
    endpoint.setApiKey(key);
}

QList<ServerApplication> DeveloperServer::applications() const
{
    return endpoint.applications();
}

QString DeveloperServer::addApplication(const ServerApplication &application)
{
    return endpoint.add(application);
}

bool DeveloperServer::removeApplication(const QString &appId)
{
    return endpoint.remove(appId);
}

void DeveloperServer::removeAllApplications()
{
    endpoint.clear();
}

void DeveloperServer::failNext(int count, const ServerFault &fault)
{
    if (count > 0) {
        nextFaults.emplace_back(count, fault);
    }
}

void DeveloperServer::failAlways(const ServerFault &fault)
{
    lastingFault = fault;
}

void DeveloperServer::clearFaults()
{
    nextFaults.clear();
    lastingFault = {};
    releaseHeldAnswers();
}

QStringList DeveloperServer::faultTexts() const
{
    QStringList texts;
    for (const auto &[count, fault] : nextFaults) {
        texts.append(QStringLiteral("next %1: %2").arg(count).arg(fault.text()));
    }
    const bool isFault = lastingFault.kind != ServerFault::Kind::Delay || lastingFault.delayMs > 0;
    if (isFault) {
        texts.append((texts.isEmpty() ? QStringLiteral("all: ") : QStringLiteral("then all: ")) +
                     lastingFault.text());
    }
    return texts;
}

HttpAnswer DeveloperServer::ordinaryAnswer(const HttpRequest &request)
{
    return takeFault().answer([&] { return endpoint.answer(request); });
}

ServerFault DeveloperServer::takeFault()
{
    if (nextFaults.empty()) {
        return lastingFault;
    }
    auto &[answersLeft, fault] = nextFaults.front();
    const ServerFault next = fault;
    if (--answersLeft == 0) {
        nextFaults.pop_front();
    }
    return next;
}
