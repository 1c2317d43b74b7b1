#pragma once

#include <sys/stat.h>

#include <string>

namespace tarn {

// Who may do what with a file: owner, group, mode, access control list, extended attributes. Both
// functions are for a new file that nobody but its owner may open so far, and throw CommandError,
// which names `path`.

/// Gives the open file `to` those of the open file `from`, whose status is `status`, each as far as
/// this user may. Nobody gets more than before: when the group cannot be kept its rights go, and
/// others keep only what the group had, too, since its members are among them then; when owner or
/// group cannot be kept, set-user-ID and set-group-ID go; when a list cannot be kept only the owner
/// has rights.
void takeOverAccess(const std::string& path, int from, const struct stat& status, int to);

/// Gives the open file `to` those of a file that a program makes in `folder`: by its default access
/// control list or else by the user's mask.
void giveUsualAccess(const std::string& path, const std::string& folder, int to);

}  // namespace tarn
