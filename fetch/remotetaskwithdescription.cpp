#include "remotetaskwithdescription.h"

RemoteTaskWithDescription::RemoteTaskWithDescription(const RemoteTaskDescription &descr)
    : VFetchTask(0)
    , description(descr)
{
    setType(SingleShot);
}

RemoteTaskWithDescription::~RemoteTaskWithDescription() = default;
