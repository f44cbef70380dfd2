#include "ImageRoot.h"

#include <QDir>
#include <QFileInfo>

namespace lunaquill {

QString ImageRoot(const QString &currentFolder, const QString &executableFolder)
{
    if (QFileInfo(currentFolder + "/pixmaps").isDir())
        return currentFolder;
    const QString installed = QDir::cleanPath(executableFolder + kInstalledDataFolder);
    if (!executableFolder.isEmpty() && QFileInfo(installed + "/pixmaps").isDir())
        return installed;
    return currentFolder;
}

} // namespace lunaquill
