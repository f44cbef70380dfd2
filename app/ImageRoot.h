// Where the program finds its images: pixmaps/ below the current folder when
// there is one (a source tree, or a folder the operator filled), otherwise the
// installed data folder beside the executable's, so an installed or unpacked
// package works from wherever it is started.
#pragma once

#include <QString>

namespace lunaquill {

// The installed data folder, relative to the folder of the executable.
inline constexpr const char *kInstalledDataFolder = "/../share/lunaquill";

// The folder the image paths ("/pixmaps/dial.png") are appended to: the current
// folder when it holds pixmaps/, else the installed data folder when that does,
// else the current folder again (the images are then missing and the map stays blank).
QString ImageRoot(const QString &currentFolder, const QString &executableFolder);

} // namespace lunaquill
