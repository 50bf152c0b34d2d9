#include "proxydoc.h"

#include <QFile>
#include <QTextStream>

// writeproxydocs FILE: puts the table of all members in place of what the file has from the table's heading
// on.
int main(int argc, char *argv[])
{
    QTextStream errors(stderr);
    if (argc != 2) {
        errors << "usage: writeproxydocs FILE\n";
        return 2;
    }
    QFile file(QFile::decodeName(argv[1]));
    if (!file.open(QIODevice::ReadWrite)) {
        errors << "writeproxydocs: cannot open " << file.fileName() << ": " << file.errorString() << '\n';
        return 1;
    }
    const QByteArray table = proxyTable().toUtf8();
    const QByteArray heading = table.left(table.indexOf('\n') + 1);
    const QByteArray written = file.readAll();
    const auto begin = written.indexOf(heading);
    const QByteArray content = (begin < 0 ? written + '\n' : written.left(begin)) + table;
    if (!file.seek(0) || file.write(content) != content.size() || !file.resize(content.size())) {
        errors << "writeproxydocs: cannot write " << file.fileName() << ": " << file.errorString() << '\n';
        return 1;
    }
    return 0;
}
