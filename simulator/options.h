#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the program is asked for on its command line.
struct Options {
    QString busAddress;
    quint16 port = 0;
    QString certificatePath;
    QString keyPath;
    QString apiKey;
    QString remoteId;
    QString serial;
    QStringList widgets;
    QString shownPipePath;
    QString daemonProgram;
    /// The page's port; nothing when no page is asked for.
    std::optional<quint16> webPort;
    bool isOffline = false;
    bool isDaemonWanted = true;
    bool isWidgetManagerWanted = true;
    bool isKeptRunning = false;
    /// Why the program cannot start with them; empty when it can.
    QString problem;

    /// Reads the application's arguments. --help ends the program.
    static Options read();
};
