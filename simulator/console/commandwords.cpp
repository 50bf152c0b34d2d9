#include "commandwords.h"

bool splitCommandWords(const QString &line, QStringList &words)
{
    words.clear();
    QString word;
    bool isInWord = false;
    bool isQuoted = false;
    for (auto position = line.begin(); position != line.end(); ++position) {
        if (*position == QLatin1Char('\\') && position + 1 != line.end()) {
            ++position;
            const bool isNewline = *position == QLatin1Char('n');
            const bool isTab = *position == QLatin1Char('t');
            word += isNewline ? QLatin1Char('\n') : (isTab ? QLatin1Char('\t') : *position);
            isInWord = true;
        } else if (*position == QLatin1Char('"')) {
            isQuoted = !isQuoted;
            isInWord = true;
        } else if (position->isSpace() && !isQuoted) {
            if (isInWord) {
                words.append(word);
                word.clear();
                isInWord = false;
            }
        } else {
            word += *position;
            isInWord = true;
        }
    }
    if (isInWord) {
        words.append(word);
    }
    return !isQuoted;
}
