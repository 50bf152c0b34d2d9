#pragma once

#include <QDBusConnection>
#include <QProcess>

/// A program that answers the daemon's calls with nothing behind them, on a device's bus. It ends with this
/// object.
class EmptyAdaptor
{
public:
    /// Returns when @p bus knows its name. Throws CannotMeasure.
    EmptyAdaptor(const QString &busAddress, const QDBusConnection &bus);
    ~EmptyAdaptor();
    Q_DISABLE_COPY(EmptyAdaptor)

    /// Its name on the bus.
    QString service() const;

private:
    QProcess process;
};
