// A module that the service's loader must not take: it agrees about something else.
#include "PictureModule/PictureModule.h"

extern "C" const PictureModule kIpodPictureModule{
    .version = kPictureModuleVersion + 1, .open = nullptr, .shrink = nullptr, .close = nullptr};
