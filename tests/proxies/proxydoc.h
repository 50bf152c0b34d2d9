#pragma once

#include <QString>

#include <vector>

/// One line of the table in the documentation.
struct DocumentedMember {
    QString className;
    QString name;
    QString shape;
    /// D-Bus types of the arguments, and of what is read of the answer; either may be empty.
    QString signature;
    QString result;
    /// Whether the device's design gives the arguments, or this library assumes them.
    bool areArgumentsFixed;
};

/// Every member of every proxy class, as the tables that drive the tests have it.
std::vector<DocumentedMember> documentedMembers();

/// The last chapter of the documentation: its heading and the table.
QString proxyTable();
