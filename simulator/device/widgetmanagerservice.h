#pragma once

#include "busservice.h"

/// The device's widget manager: which widgets are installed.
class WidgetManagerService : public BusService
{
    Q_OBJECT
public:
    explicit WidgetManagerService(const QString &busAddress, QObject *parent = nullptr);
    ~WidgetManagerService() override;

    QStringList widgets() const;

    /// Claims the name and sends windowServerDidStarted, spelled so on the bus.
    bool start() override;

    /// Sets the installed widgets without announcing them, for the state that a test begins with.
    void setWidgetsQuietly(const QStringList &ids);
    /// Installs a widget and sends newWidgetCreated. The widget is there afterwards, also when the service
    /// does not run and sends nothing.
    void createWidget(const QString &id);
    /// Removes a widget and sends widgetDeleted; false, with nothing sent, when there is none of that id.
    bool deleteWidget(const QString &id);

private:
    mutable QMutex stateMutex;
    QStringList installed;
};
