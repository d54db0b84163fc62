// Access lists on a machine without Windows' own: kept with the file or folder as its extended attribute
// user.trelvin.acl, so that they move along with it (cp -a, rsync -X, tar --xattrs) and can be looked at:
//
//   getfattr --only-values -n user.trelvin.acl FILE
//
// access_list_text.h tells what a line holds and how the fifteen values of an entry are assigned. A path
// without the attribute has an empty list, and writing an empty list takes the attribute away. Nothing on
// this machine grants or refuses anything by these lists.
#pragma once

#include <memory>

#include "platform/linux/paths.h"
#include "platform/ntfs.h"

namespace trelvin {

// The path of the control is looked up by getAccounts, once; the list then keeps to the file that was found.
//
// secondApplyFlag, for a folder: writeAccounts lets the files of the folder inherit, too. In each of their
// lists the entries marked as inherited (ID) give way to those of the folder's entries that files inherit
// (OI), with the mark; the others stay. Subfolders have lists of their own, which nobody touches. The folder
// and its files get their lists all together: when one of them can't be written, they have the lists from
// before.
//
// 0x80020009, from getAccounts and writeAccounts, with path and cause in description and lastError: a path
// that isn't there, isn't readable, or can't be written by who isn't its owner; a file system that keeps no
// extended attributes or no list of that size (64 KB at the most, ext4 about 4); an attribute that somebody
// edited into something else; an account name that is none (see faultOfAccount). setFileOrDirectory clears
// lastError.
std::unique_ptr<NtfsControl> makeAccessLists(PathMapping toNative);

}  // namespace trelvin
