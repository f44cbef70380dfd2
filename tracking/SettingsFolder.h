// Where the settings file, the DX station list and the band lists live.
#pragma once

#include <QString>

namespace lunaquill {

// ~/AppData/Roaming/Lunaquill/ when that folder exists (settings and lists
// kept there by earlier versions stay where they are), otherwise
// $XDG_CONFIG_HOME/Lunaquill/, or ~/.config/Lunaquill/ when that variable is
// unset, empty or not an absolute path. Ends with "/"; the folder need not
// exist yet (the first save makes it).
QString SettingsFolder();

} // namespace lunaquill
