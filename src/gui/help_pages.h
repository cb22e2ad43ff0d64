#pragma once

#include <QUrl>

namespace kivo {

// The pages of the Help menu, shipped with Kivo as local HTML files.
enum class HelpPage { website, gettingStarted, releaseNotes, contact, privacyPolicy };

// The installed page (under the data folders, then next to the program, then in the source
// tree a development build runs from); an empty address when none is found.
QUrl helpPageUrl(HelpPage page);

// Opens the page in the default browser; a page that cannot be found or opened is reported as a
// diagnostic.
void openHelpPage(HelpPage page);

}  // namespace kivo
