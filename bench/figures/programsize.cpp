#include "figures.h"
#include "measures.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

namespace
{
constexpr double bytesPerKilobyte = 1024;
}

QVector<Row> Figures::programSize(const Scale & /*scale*/)
{
    const QTemporaryDir directory;
    const QString copy = directory.filePath(QStringLiteral("qwixtd"));
    require(QProcess::execute(QStringLiteral("strip"),
                              {QStringLiteral("-o"), copy, QStringLiteral(QWIXTD_PROGRAM)}) == 0,
            QStringLiteral("the program cannot be stripped"));
    return {{QStringLiteral("stripped program"), QStringLiteral("KB"),
             static_cast<double>(QFileInfo(copy).size()) / bytesPerKilobyte, std::nullopt, 200,
             Row::Judged::Value}};
}
