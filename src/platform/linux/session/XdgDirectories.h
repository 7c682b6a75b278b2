#pragma once

#include "platform/Directories.h"

namespace XdgDirectories {

/// The user's folders as the XDG base directory specification and the file
/// "user-dirs.dirs" name them. A variable that holds no absolute path counts as
/// unset.
Directories fromEnvironment();

}
