/// File work that the family's programs share. Log channel "util.file".
/// Unless said otherwise a failure throws SystemException "OS call failed: " and the system's text, with
/// errno as code. No function waits for the other end of a named pipe. Thread-safety: all may be called from
/// any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdlib>
#include <iosfwd>
#include <string>

#include <fokrazo/export.h>

/// Renames. Returns 0. @throws IOException
FOKRAZO_API int MoveFile(const std::string& from, const std::string& to);
/// Renames and gives the file the security label of its new place. Returns 0, or -1 with a line on standard
/// error; never throws. Nothing is done if both texts are equal.
FOKRAZO_API int renameFile(std::string from, std::string to);

/// Size in bytes.
FOKRAZO_API off_t GetFileSize(const char* path);
FOKRAZO_API off_t GetFileSize(const std::string& path);
/// The nine permission bits.
FOKRAZO_API int GetPerms(const char* path);
FOKRAZO_API int GetPerms(const std::string& path);

/// Makes a temporary file; `templ` ends in "XXXXXX" and is given the name. Returns the descriptor, the
/// caller's to close, or -1 with errno; the file named by the template itself is then removed.
FOKRAZO_API int mkstemp(std::string& templ);
/// As above, with mode and owner. @throws SystemException (code -1) they cannot be set; no file is left
FOKRAZO_API int mkstemp(std::string& templ, unsigned mode, unsigned uid, unsigned gid);

/// Makes a temporary file with that mode and opens `out` on it; the name stands in `templ`. `out` has its
/// fail bit set if it cannot be opened. Returns what closing the first descriptor gave.
/// @throws SystemException (code -1) the file cannot be made; none is left
FOKRAZO_API int OpenTempFile(char* templ, int mode, std::ofstream& out);
/// As above, with an owner.
FOKRAZO_API int OpenTempFile(char* templ, int mode, unsigned uid, unsigned gid, std::ofstream& out);

/// Follows a chain of links, relative ones included, to a path that is no link. `depth` counts the links
/// passed, 0 at first. False, with `out` empty, for a missing path and for more than 100 links.
FOKRAZO_API bool GetSymLinkPath(const char* path, std::string& out, int depth);

/// Free space of the file system in KiB. Returns 0, or errno with `kilobytes` untouched.
FOKRAZO_API int GetFreeSpaceSize(const char* path, unsigned long long& kilobytes);
FOKRAZO_API int GetFreeSpaceSize(const std::string& path, unsigned long long& kilobytes);

/// The whole file. `mode`, if not null, is given its nine permission bits.
FOKRAZO_API std::string ReadFile(const std::string& path, int* mode);
/// Writes the whole file in place. `mode`, if not null, is what its permission bits become.
FOKRAZO_API void WriteFile(const std::string& path, const std::string& content, int* mode);

/// Copies a file's bytes, not its mode. A symbolic link at `to` is replaced, never written through. Reading
/// and writing that fail end the copy without a word.
FOKRAZO_API void CopyFile(const std::string& from, const std::string& to);
/// Copies each file whose name matches the extended regular expression, in which "^" and "$" match nowhere.
/// Returns what closing the directory gave.
/// @throws BadDataException the pattern is wrong
FOKRAZO_API int CopyFiles(const std::string& fromDir, const std::string& toDir, const std::string& pattern);

/// Puts the directory for a user's temporary files into `dst`. Root's is made if it is missing, and what
/// others may have planted in its place is removed. Returns 0, or -1 with errno: ERANGE if `size` bytes are
/// too few, EFAULT if `dst` is null.
FOKRAZO_API int GetZantrelTempDir(unsigned uid, char* dst, size_t size);
/// The same for the effective user.
FOKRAZO_API int GetZantrelTempDirForCurrentUser(char* dst, size_t size);

namespace vesk {

/// The bytes of a file, as many as it has when the call begins. A failure's code is the result of the call.
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
