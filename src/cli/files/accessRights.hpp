#pragma once

#include <sys/stat.h>

#include <string>

namespace tarn {

// The access rights of a file: owner, group, mode, access control list, extended attributes. Both
// functions are for a new file that only its owner may open so far. Both throw CommandError with
// `path` as its subject.

/// Gives the open file `to` the access rights of the open file `from`, whose status is `status`, as
/// far as this user may. Nobody gets more rights than before:
///
/// - When the group cannot be kept, the new group has no rights. Others keep only the rights that
/// the
///   group had, too, since its members are now among the others.
/// - When owner or group cannot be kept, set-user-ID and set-group-ID are removed.
/// - When an access control list cannot be kept, only the owner has rights.
void takeOverAccess(const std::string& path, int from, const struct stat& status, int to);

/// Gives the open file `to` the access rights of a new file in `folder`: those of the folder's
/// default access control list, or those that the user's mask leaves.
void giveUsualAccess(const std::string& path, const std::string& folder, int to);

}  // namespace tarn
