#include "emptyvalues.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

namespace
{

// A structure of the program's own that D-Bus knows, with a path.
struct Placed {
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Placed &placed)
{
    argument.beginStructure();
    argument << 1 << placed.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Placed &placed)
{
    int number = 0;
    argument.beginStructure();
    argument >> number >> placed.path;
    argument.endStructure();
    return argument;
}

using Paths = QList<QDBusObjectPath>;
using Signatures = QList<QDBusSignature>;
using Descriptors = QList<QDBusUnixFileDescriptor>;
using ListOfPaths = QList<Paths>;
using PathByName = QMap<QString, QDBusObjectPath>;
using NameByPath = QMap<QDBusObjectPath, QString>;

template <typename T>
QVariant of(const T &value)
{
    return QVariant::fromValue(value);
}

// What the program writes by itself; an empty path leaves it unfinished.
template <typename T>
QVariant written(const T &value)
{
    QDBusArgument argument;
    argument << value;
    return kept(argument);
}

} // namespace

Q_DECLARE_METATYPE(Placed)

std::vector<AwkwardValue> emptyValues()
{
    qDBusRegisterMetaType<Placed>();
    qDBusRegisterMetaType<QList<Placed>>();
    qDBusRegisterMetaType<ListOfPaths>();
    qDBusRegisterMetaType<PathByName>();
    qDBusRegisterMetaType<NameByPath>();
    const QString a = QStringLiteral("a");
    const QDBusObjectPath path(QStringLiteral("/a"));
    const QDBusObjectPath noPath;
    const QDBusObjectPath badPath(QStringLiteral("abc"));
    const QDBusSignature number(QStringLiteral("i"));
    const QDBusUnixFileDescriptor input(0);
    return {
        {"list of paths", of(Paths{path}), R"(ao[path("/a")])"},
        {"list of no paths", of(Paths()), "ao[]"},
        {"list with an empty path", of(Paths{path, noPath}), ""},
        {"list with an invalid path", of(Paths{badPath}), ""},
        {"list of signatures", of(Signatures{number}), R"(ag[signature("i")])"},
        {"list with an empty signature", of(Signatures{number, QDBusSignature()}), ""},
        {"list of descriptors", of(Descriptors{input}), R"(ah[QDBusUnixFileDescriptor("")])"},
        {"list with a closed descriptor", of(Descriptors{input, QDBusUnixFileDescriptor()}), ""},
        {"variant of a list with an empty path", of(QDBusVariant(of(Paths{noPath}))), ""},
        {"list of paths of an unknown type", of(std::vector<QDBusObjectPath>{path, noPath}),
         R"([path("/a")])"},
        {"list of lists of paths", of(ListOfPaths{{path}}), R"(aao[ao[path("/a")]])"},
        {"list of lists with an empty path", of(ListOfPaths{{path}, {noPath}}), ""},
        {"map of paths", of(PathByName{{a, path}}), R"(a{so}{"a": path("/a")})"},
        {"map with an empty path", of(PathByName{{a, path}, {QString(), noPath}}), ""},
        {"map by path", of(NameByPath{{path, a}}), R"~(a{os}{"path("/a")": QString("a")})~"},
        {"map with an empty path as key", of(NameByPath{{noPath, a}, {path, a}}), ""},
        {"own structure with a path", of(Placed{path}), ""},
        {"own structure with an empty path", of(Placed{noPath}), ""},
        {"list of own structures with a path", of(QList<Placed>{{path}}), ""},
        {"list of own structures with an empty path", of(QList<Placed>{{noPath}}), ""},
        {"list of no own structures with a path", of(QList<Placed>()), "a(io)[]"},
        {"written structure with a path", written(Placed{path}), R"((int("1"), path("/a")))"},
        {"written structure with an empty path", written(Placed{noPath}), ""},
        {"written paths", written(Paths{path}), R"(ao[path("/a")])"},
        {"written paths with an empty one", written(Paths{path, noPath}), ""},
    };
}
