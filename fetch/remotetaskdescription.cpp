#include "remotetaskdescription.h"

#include <QHash>
#include <QRandomGenerator>

bool operator==(const RemoteTaskDescription &a, const RemoteTaskDescription &b)
{
    return a.type == b.type && a.id == b.id && a.data == b.data;
}

bool operator!=(const RemoteTaskDescription &a, const RemoteTaskDescription &b)
{
    return !(a == b);
}

bool operator<(const RemoteTaskDescription &a, const RemoteTaskDescription &b)
{
    return a.type < b.type || a.id < b.id || a.data != b.data;
}

std::size_t RemoteTaskDescriptionHash::operator()(const RemoteTaskDescription &descr) const
{
    // A different seed in each process, so that nobody can choose descriptions with equal hashes.
    static const quint32 seed = QRandomGenerator::system()->generate();
    std::size_t hash = qHash(descr.id, seed) ^ static_cast<std::size_t>(descr.type);
    for (const QVariant &value : descr.data) {
        hash = hash * 31 + qHash(value.toString(), seed);
    }
    return hash;
}
