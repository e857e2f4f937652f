// The data folder, and the preferences' file in its folder "Config": the bytes of `appPrefsRec` and nothing else.

#pragma once

#include <string>
#include <string_view>

#include "engine/session/preferences.h"

namespace tarnova {

inline constexpr char prefsFileName[] = "Ostreon Tag Display.prf";
inline constexpr std::uint32_t prefsVersionForgotten = 0xFFFFFFFF;  // replaced by defaults without a warning
inline constexpr std::uint32_t prefsLoadStamp = 1453102303;         // in `loadStamp` behind a load that failed

/// Settles `dataFolder` and `dataFolderInApp` of the session: "Plug-Ins/Tarnova" below the application's folder when a
/// folder "Config" lies there, else "Tarnova" below the user's roaming data folder. Both are UTF-8. From then on the
/// index files lie below it too.
void settleDataFolder(std::string_view applicationFolder, std::string_view roamingFolder);

/// Folder of the temporary files of builds and outputs, below the data folder; empty while there is none.
[[nodiscard]] std::string tempFilesFolder();

/// Path of the file; empty while the session has no data folder.
[[nodiscard]] std::string preferencesPath();

/// Makes the folders and reads the file. One that is missing or empty gives the defaults; one of another version, owner
/// or size gives them with error 201 shown, unless its version is `prefsVersionForgotten`. Defaults are written at
/// once. Strings of a damaged file are cut to their fields, so that nothing is read past them.
void loadPreferences();

/// Writes the file through a temporary one. A failure is silent, and so is a file that is write-protected: the settings
/// of this session hold, and the file stays as it was. Does nothing while the session has no data folder, or its
/// preferences are temporary.
void savePreferences();

}  // namespace tarnova
