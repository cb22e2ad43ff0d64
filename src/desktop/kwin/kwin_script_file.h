#pragma once

#include <QString>

namespace kivo {

// Where Kivo's KWin script is: installed beside Kivo's other shared files (the XDG data folders,
// then the share folder next to the executable's), else in the build tree. Empty when nowhere.
QString locateKWinScript();

}  // namespace kivo
