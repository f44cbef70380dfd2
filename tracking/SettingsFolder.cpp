#include "SettingsFolder.h"

#include <QDir>
#include <QFileInfo>

namespace lunaquill {

QString SettingsFolder()
{
    const QString earlier = QDir::homePath() + "/AppData/Roaming/Lunaquill/";
    if (QFileInfo(earlier).isDir())
        return earlier;
    // A relative XDG_CONFIG_HOME is invalid and is ignored, as the base
    // directory rules say.
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (config.isEmpty() || QDir::isRelativePath(config))
        config = QDir::homePath() + "/.config";
    return config + "/Lunaquill/";
}

} // namespace lunaquill
