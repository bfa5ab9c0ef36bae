#include "common/win/errno_codes_posix.h"

#include <sys/stat.h>

#include <cerrno>

#include "common/win/file_codes.h"

namespace win::host {

uint32_t error_from_errno(int error, const std::string& host_path) {
  switch (error) {
    case 0:
      return kErrorSuccess;
    case ENOENT: {
      if (host_path.empty()) return kErrorFileNotFound;
      std::string dir = host_path;
      while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
      const size_t slash = dir.rfind('/');
      if (slash == std::string::npos) return kErrorFileNotFound;
      dir.resize(slash == 0 ? 1 : slash);
      struct stat st;
      return ::stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode) ? kErrorFileNotFound
                                                                    : kErrorPathNotFound;
    }
    case ENOTDIR:
      return kErrorPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
      return kErrorAccessDenied;
    case EROFS:
      return kErrorWriteProtect;
    case EEXIST:
      return kErrorAlreadyExists;
    case ENOTEMPTY:
      return kErrorDirNotEmpty;
    case ENOSPC:
    case EFBIG:
    case EDQUOT:
      return kErrorDiskFull;
    case ENAMETOOLONG:
      return kErrorFilenameExcedRange;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case EBADF:
      return kErrorInvalidHandle;
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EXDEV:
      return kErrorNotSameDevice;
    case EBUSY:
      return kErrorBusy;
    case ETXTBSY:
    case EAGAIN:
      return kErrorSharingViolation;
    case ELOOP:
      return kErrorCantResolveFilename;
    case EINVAL:
      return kErrorInvalidParameter;
    default:
      return kErrorIoDevice;
  }
}

}  // namespace win::host
