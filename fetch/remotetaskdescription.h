#pragma once

#include <QString>
#include <QVariantMap>

#include <cstddef>

/// What one remote operation is about; a value shared by the manager, the worker and the tasks.
struct RemoteTaskDescription {
    /// The kinds of remote operation. Other numbers may stand in `type`; no request is built for them.
    enum Kind { Register = 1, Delete = 2, Update = 3, GetList = 4 };

    int type = 0;
    QString id;       ///< the widget's uuid; empty for GetList
    QVariantMap data; ///< the operation's parameters
};

/// All three fields are equal.
bool operator==(const RemoteTaskDescription &a, const RemoteTaskDescription &b);
bool operator!=(const RemoteTaskDescription &a, const RemoteTaskDescription &b);
/// By type, else by id, else whether the data differ. Not a strict ordering, on purpose: two descriptions
/// that differ in their data only are each less than the other. A look-up by key in a map ordered so misses
/// entries; see tasksbydescription.h for the ways that do not.
bool operator<(const RemoteTaskDescription &a, const RemoteTaskDescription &b);

/// For containers that find descriptions by equality. Equal descriptions whose values are strings have equal
/// hashes.
struct RemoteTaskDescriptionHash {
    std::size_t operator()(const RemoteTaskDescription &descr) const;
};
