#include "remotetaskdescription.h"

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
