// The Win32 numbers the file layer speaks in on both builds: access rights, share modes,
// dispositions, flags, move methods and the error codes that the logic tests for. The host
// build maps its own failures onto these error codes.
#pragma once
#include <cstdint>

namespace win {

// Access rights.
constexpr uint32_t kGenericRead = 0x80000000u;
constexpr uint32_t kGenericWrite = 0x40000000u;

// Share modes.
constexpr uint32_t kFileShareRead = 0x1;
constexpr uint32_t kFileShareWrite = 0x2;
constexpr uint32_t kFileShareDelete = 0x4;

// Dispositions.
constexpr uint32_t kCreateNew = 1;
constexpr uint32_t kCreateAlways = 2;
constexpr uint32_t kOpenExisting = 3;
constexpr uint32_t kOpenAlways = 4;
constexpr uint32_t kTruncateExisting = 5;

// Attributes and flags.
constexpr uint32_t kFileAttributeNormal = 0x80;
constexpr uint32_t kFileFlagBackupSemantics = 0x02000000;
constexpr uint32_t kFileFlagNoBuffering = 0x20000000;
// Opens a junction or symbolic link itself instead of what it points to (the host build: the
// open fails on a link, O_NOFOLLOW).
constexpr uint32_t kFileFlagOpenReparsePoint = 0x00200000;

// Move methods of seek.
constexpr uint32_t kFileBegin = 0;
constexpr uint32_t kFileCurrent = 1;
constexpr uint32_t kFileEnd = 2;

// Error codes. They stand in a namespace of their own, brought into win:: by a using-directive:
// another header of win:: may declare some of the same numbers directly, and win::kErrorX then
// names that declaration (of the same value) instead of clashing with this one.
namespace error_codes {
constexpr uint32_t kErrorSuccess = 0;
constexpr uint32_t kErrorInvalidFunction = 1;
constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorPathNotFound = 3;
constexpr uint32_t kErrorTooManyOpenFiles = 4;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorNotEnoughMemory = 8;
constexpr uint32_t kErrorNotSameDevice = 17;
constexpr uint32_t kErrorWriteProtect = 19;
constexpr uint32_t kErrorSharingViolation = 32;
constexpr uint32_t kErrorLockViolation = 33;
constexpr uint32_t kErrorHandleEof = 38;
constexpr uint32_t kErrorFileExists = 80;
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorDiskFull = 112;
constexpr uint32_t kErrorInvalidName = 123;
constexpr uint32_t kErrorNegativeSeek = 131;
constexpr uint32_t kErrorDirNotEmpty = 145;
constexpr uint32_t kErrorBusy = 170;
constexpr uint32_t kErrorAlreadyExists = 183;
constexpr uint32_t kErrorFilenameExcedRange = 206;
constexpr uint32_t kErrorDirectory = 267;
constexpr uint32_t kErrorIoDevice = 1117;
constexpr uint32_t kErrorCantResolveFilename = 1921;
constexpr uint32_t kErrorReparsePointEncountered = 4395;
}  // namespace error_codes
using namespace error_codes;

}  // namespace win

namespace win {

// An open file as the system knows it: a HANDLE on Windows, a file descriptor on the host
// build, widened to one integer type so that headers need no system header.
using native_handle_t = std::intptr_t;
constexpr native_handle_t kInvalidNativeHandle = -1;

}  // namespace win
