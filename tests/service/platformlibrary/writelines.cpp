// Writes lines of every level that the shipped build writes, the last of which ends the process.
#include "log.h"

#include <string>

int main()
{
    logInfo("before the tag");
    logSetTag("QWIXTD");
    logInfo("info %d", 1);
    logWarning("warning ends in a space ");
    logError("error %s", "three");
    logWarning("%s", std::string(300, 'x').c_str());
    logFatal("the end of %s", "all");
}
