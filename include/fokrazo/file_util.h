/// File operations. Log channel "util.file".
/// Unless a comment says otherwise, a failure throws SystemException "OS call failed: " and the system's
/// text, with errno as code. No function waits for the other end of a FIFO, and all descriptors are
/// close-on-exec. Thread-safe.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdlib>
#include <iosfwd>
#include <string>

#include <fokrazo/export.h>

/// Renames. Returns 0. @throws IOException
FOKRAZO_API int MoveFile(const std::string& from, const std::string& to);
/// Renames, and sets the SELinux label that the policy defines for the new path. Returns 0, or -1 with errno
/// and a line on standard error; never throws. Does nothing if both strings are equal.
FOKRAZO_API int renameFile(std::string from, std::string to);

/// Size in bytes.
FOKRAZO_API off_t GetFileSize(const char* path);
FOKRAZO_API off_t GetFileSize(const std::string& path);
/// The nine permission bits.
FOKRAZO_API int GetPerms(const char* path);
FOKRAZO_API int GetPerms(const std::string& path);

/// Creates a temporary file. `templ` ends in "XXXXXX" and becomes the file's name. Returns a descriptor that
/// the caller closes, or -1 with errno; a file named exactly like the template is then removed.
FOKRAZO_API int mkstemp(std::string& templ);
/// As above, and sets mode and owner. @throws SystemException (code -1) they cannot be set; no file is left
FOKRAZO_API int mkstemp(std::string& templ, unsigned mode, unsigned uid, unsigned gid);

/// Creates a temporary file with that mode and opens it as `out`; `templ` becomes its name. If `out` cannot
/// be opened, its fail bit is set. Returns 0, or -1 if closing the descriptor that created the file failed.
/// @throws SystemException (code -1) the file cannot be created; none is left
FOKRAZO_API int OpenTempFile(char* templ, int mode, std::ofstream& out);
/// As above, and sets the owner.
FOKRAZO_API int OpenTempFile(char* templ, int mode, unsigned uid, unsigned gid, std::ofstream& out);

/// Follows symbolic links to a path that is not a link, and stores it in `out`. `depth` is the number of
/// links followed so far; callers pass 0. Returns false, with `out` empty, for a missing path or after 100
/// links.
FOKRAZO_API bool GetSymLinkPath(const char* path, std::string& out, int depth);

/// Free space of the file system in KiB. Returns 0, or errno with `kilobytes` untouched.
FOKRAZO_API int GetFreeSpaceSize(const char* path, unsigned long long& kilobytes);
FOKRAZO_API int GetFreeSpaceSize(const std::string& path, unsigned long long& kilobytes);

/// Reads a whole file. Sets `*mode` to its nine permission bits, unless `mode` is null.
FOKRAZO_API std::string ReadFile(const std::string& path, int* mode);
/// Overwrites a file in place, or creates it. Its mode becomes `*mode`, unless `mode` is null.
FOKRAZO_API void WriteFile(const std::string& path, const std::string& content, int* mode);

/// Copies the content of a file, not its mode. A symbolic link at `to` is replaced, never written through. If
/// opening, reading or writing fails, the copy ends and no error is reported.
FOKRAZO_API void CopyFile(const std::string& from, const std::string& to);
/// Copies each file whose name matches an extended regular expression, in which "^" and "$" match nothing.
/// Returns 0, or -1 if closing the directory failed.
/// @throws BadDataException the pattern does not compile
FOKRAZO_API int CopyFiles(const std::string& fromDir, const std::string& toDir, const std::string& pattern);

/// Copies the path of the directory for a user's temporary files to `dst`. Root's directory is created if it
/// is missing; anything else in its place is removed, never followed. Returns 0, or -1 with errno: ERANGE if
/// `size` is too small, EFAULT if `dst` is null.
FOKRAZO_API int GetZantrelTempDir(unsigned uid, char* dst, size_t size);
/// The same for the effective user.
FOKRAZO_API int GetZantrelTempDirForCurrentUser(char* dst, size_t size);

namespace vesk {

/// The content of a file, up to its size when the call begins. A failure's code is the return value of the
/// failed system call.
FOKRAZO_API std::string readFile(std::string path);

using ::CopyFile;
using ::CopyFiles;
using ::GetFileSize;
using ::GetFreeSpaceSize;
using ::GetPerms;
using ::GetSymLinkPath;
using ::GetZantrelTempDir;
using ::GetZantrelTempDirForCurrentUser;
using ::mkstemp;
using ::MoveFile;
using ::OpenTempFile;
using ::ReadFile;
using ::renameFile;
using ::WriteFile;

}  // namespace vesk
