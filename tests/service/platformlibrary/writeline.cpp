#include "log.h"

int main()
{
    logSetTag("QWIXTD");
    logWarning("one %s", "line");
    return 0;
}
