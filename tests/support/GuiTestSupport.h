// Helpers for tests that drive Qt code.
#pragma once

#include <QString>

namespace lunaquill::test {

// The temporary home folder of this test process (settings and lists go there).
QString TestHome();
// <home>/.config/Lunaquill/ (a new user's settings folder), created.
QString SettingsFolder();
void ClearTestHome();

} // namespace lunaquill::test
