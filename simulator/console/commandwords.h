#pragma once

#include <QString>
#include <QStringList>

/// Splits a typed line into words at white space. Double quotes keep spaces inside a word and make an empty
/// word; a backslash takes the next character as it is, except for \n and \t. False when a quote is left
/// open.
bool splitCommandWords(const QString &line, QStringList &words);
