#include "FileSystemListing.h"

QString fileSystemListing()
{
    return powerShellListing();
}
