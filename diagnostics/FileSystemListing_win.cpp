#include "FileSystemListing.h"

#include "win32/wmi.h"

#include <QDebug>

QString fileSystemListing()
{
    // What "get-wmiobject win32_logicaldisk" lists, with each volume's file system beside it;
    // mapped network drives are logical disks too, with their share as ProviderName.
    const std::vector<std::wstring> names{L"DeviceID",   L"DriveType", L"ProviderName",
                                          L"FileSystem", L"FreeSpace", L"Size",
                                          L"VolumeName"};
    const win32::WmiInstances disks =
        win32::wmiInstances(L"Win32_LogicalDisk", names, [](const std::string& message) {
            qDebug().noquote() << QString::fromStdString(message);
        });
    return withSizeTexts(QString::fromStdWString(win32::powerShellList(names, disks)));
}
