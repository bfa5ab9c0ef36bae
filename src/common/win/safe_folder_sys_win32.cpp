#include "common/win/safe_folder_sys.h"

#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <vector>

namespace win::sys {

namespace {

const wchar_t* w(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

// The rights that let a holder change a folder or what is in it.
constexpr DWORD kWriteRights = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA |
                               FILE_DELETE_CHILD | FILE_WRITE_ATTRIBUTES | DELETE | WRITE_DAC |
                               WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL | MAXIMUM_ALLOWED;

struct local_free_t {
  void operator()(void* p) const { ::LocalFree(p); }
};

// The user of the process's own token (not a thread's impersonation), as a byte copy.
std::vector<BYTE> process_user_sid() {
  HANDLE token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
  DWORD size = 0;
  ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<BYTE> buffer(size);
  std::vector<BYTE> sid;
  if (size != 0 && ::GetTokenInformation(token, TokenUser, buffer.data(), size, &size)) {
    const PSID user = reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid;
    const DWORD length = ::GetLengthSid(user);
    sid.assign(static_cast<BYTE*>(user), static_cast<BYTE*>(user) + length);
  }
  ::CloseHandle(token);
  return sid;
}

bool is_well_known(PSID sid, WELL_KNOWN_SID_TYPE type) {
  return ::IsWellKnownSid(sid, type) != FALSE;
}

bool is_trusted(PSID sid, const std::vector<BYTE>& self) {
  if (sid == nullptr || !::IsValidSid(sid)) return false;
  if (is_well_known(sid, WinLocalSystemSid) || is_well_known(sid, WinBuiltinAdministratorsSid)) {
    return true;
  }
  return !self.empty() && ::EqualSid(sid, const_cast<BYTE*>(self.data())) != FALSE;
}

// A group that stands for users at large: any of them could plant a link or a file. Write
// rights for one of these make a folder unsafe. An account or group granted by name (the
// account an Oracle service runs as, which writes parameter files and ASM copies into these
// folders) is an administrator's choice and stays.
bool is_broad_group(PSID sid) {
  static const WELL_KNOWN_SID_TYPE kBroad[] = {
      WinWorldSid,       WinAuthenticatedUserSid, WinBuiltinUsersSid, WinInteractiveSid,
      WinAnonymousSid,   WinBuiltinGuestsSid,     WinNetworkSid,      WinBatchSid,
      WinLocalSid,       WinDialupSid,            WinRemoteLogonIdSid, WinThisOrganizationSid,
      WinCreatorOwnerSid, WinCreatorGroupSid};
  for (const WELL_KNOWN_SID_TYPE type : kBroad) {
    if (is_well_known(sid, type)) return true;
  }
  // Domain Users, Domain Guests and Domain Computers of any domain (S-1-5-21-...-513/514/515).
  const SID_IDENTIFIER_AUTHORITY* authority = ::GetSidIdentifierAuthority(sid);
  const SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
  const UCHAR count = *::GetSidSubAuthorityCount(sid);
  if (authority != nullptr && std::equal(nt.Value, nt.Value + 6, authority->Value) &&
      count >= 2 && *::GetSidSubAuthority(sid, 0) == SECURITY_NT_NON_UNIQUE) {
    const DWORD rid = *::GetSidSubAuthority(sid, count - 1);
    if (rid == DOMAIN_GROUP_RID_USERS || rid == DOMAIN_GROUP_RID_GUESTS ||
        rid == DOMAIN_GROUP_RID_COMPUTERS) {
      return true;
    }
  }
  return false;
}

// A write entry that the check lets stand: trusted, granted by name, or a creator entry that
// applies only to what is made inside.
bool write_entry_accepted(const ACE_HEADER* header, PSID sid, const std::vector<BYTE>& self) {
  if (is_trusted(sid, self)) return true;
  // The creator of something made inside stands for that creator, who can only be trusted
  // once this folder is safe.
  if ((header->AceFlags & INHERIT_ONLY_ACE) != 0 &&
      (is_well_known(sid, WinCreatorOwnerSid) || is_well_known(sid, WinCreatorGroupSid))) {
    return true;
  }
  return !is_broad_group(sid);
}

// The reason the access list lets somebody else write, or empty.
std::string dacl_problem(PACL dacl, const std::vector<BYTE>& self) {
  if (dacl == nullptr) return "it has no access list, so everybody may write in it";
  ACL_SIZE_INFORMATION info = {};
  if (!::GetAclInformation(dacl, &info, sizeof info, AclSizeInformation)) {
    return "its access list cannot be read";
  }
  for (DWORD i = 0; i < info.AceCount; ++i) {
    void* raw = nullptr;
    if (!::GetAce(dacl, i, &raw)) return "its access list cannot be read";
    const ACE_HEADER* header = static_cast<const ACE_HEADER*>(raw);
    if (header->AceType == ACCESS_DENIED_ACE_TYPE) continue;
    if (header->AceType != ACCESS_ALLOWED_ACE_TYPE) {
      return "its access list holds an entry of a kind the library does not accept";
    }
    const auto* ace = static_cast<const ACCESS_ALLOWED_ACE*>(raw);
    if ((ace->Mask & kWriteRights) == 0) continue;
    PSID sid = const_cast<DWORD*>(&ace->SidStart);
    if (write_entry_accepted(header, sid, self)) continue;
    return "users other than SYSTEM, the Administrators and accounts granted by name may write "
           "in it";
  }
  return std::string();
}

// The safe descriptor: a protected list that gives SYSTEM, the Administrators and, when the
// process runs as somebody else, the process's user full control, inherited by all below.
std::wstring safe_sddl() {
  std::wstring sddl = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";
  const std::vector<BYTE> self = process_user_sid();
  if (!self.empty() && !is_well_known(const_cast<BYTE*>(self.data()), WinLocalSystemSid)) {
    wchar_t* text = nullptr;
    if (::ConvertSidToStringSidW(const_cast<BYTE*>(self.data()), &text)) {
      sddl += L"(A;OICI;FA;;;";
      sddl += text;
      sddl += L")";
      ::LocalFree(text);
    }
  }
  return sddl;
}

std::unique_ptr<void, local_free_t> descriptor_of(const std::wstring& sddl) {
  PSECURITY_DESCRIPTOR sd = nullptr;
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1, &sd,
                                                               nullptr)) {
    return nullptr;
  }
  return std::unique_ptr<void, local_free_t>(sd);
}

std::unique_ptr<void, local_free_t> safe_descriptor() { return descriptor_of(safe_sddl()); }

// The safe descriptor, with the write entries granted by name in `dacl` kept: a repair takes
// away only what users at large were given.
std::wstring repaired_sddl(PACL dacl, const std::vector<BYTE>& self) {
  std::wstring sddl = safe_sddl();
  ACL_SIZE_INFORMATION info = {};
  if (dacl == nullptr || !::GetAclInformation(dacl, &info, sizeof info, AclSizeInformation)) {
    return sddl;
  }
  for (DWORD i = 0; i < info.AceCount; ++i) {
    void* raw = nullptr;
    if (!::GetAce(dacl, i, &raw)) continue;
    const ACE_HEADER* header = static_cast<const ACE_HEADER*>(raw);
    if (header->AceType != ACCESS_ALLOWED_ACE_TYPE) continue;
    const auto* ace = static_cast<const ACCESS_ALLOWED_ACE*>(raw);
    PSID sid = const_cast<DWORD*>(&ace->SidStart);
    if (is_trusted(sid, self) || is_broad_group(sid)) continue;
    wchar_t* text = nullptr;
    if (!::ConvertSidToStringSidW(sid, &text)) continue;
    std::wstring flags;
    if (header->AceFlags & OBJECT_INHERIT_ACE) flags += L"OI";
    if (header->AceFlags & CONTAINER_INHERIT_ACE) flags += L"CI";
    if (header->AceFlags & NO_PROPAGATE_INHERIT_ACE) flags += L"NP";
    if (header->AceFlags & INHERIT_ONLY_ACE) flags += L"IO";
    wchar_t mask[16];
    std::swprintf(mask, 16, L"0x%lx", static_cast<unsigned long>(ace->Mask));
    sddl += L"(A;" + flags + L";" + mask + L";;;" + text + L")";
    ::LocalFree(text);
  }
  return sddl;
}

// What the check says of an owner and an access list: empty when safe; `repairable` when only
// the list is at fault.
std::string owner_and_list_problem(PSID owner, PACL dacl, const std::vector<BYTE>& self,
                                   bool& repairable) {
  repairable = false;
  if (!is_trusted(owner, self)) return "it belongs to another user";
  const std::string problem = dacl_problem(dacl, self);
  repairable = !problem.empty();
  return problem;
}

std::u16string widened(const std::wstring& text) {
  return std::u16string(reinterpret_cast<const char16_t*>(text.c_str()), text.size());
}

int kind_of(const BY_HANDLE_FILE_INFORMATION& info) {
  if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return 1;
  if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && info.nNumberOfLinks > 1) return 2;
  return 0;
}

}  // namespace

folder_state_t inspect_folder(const std::u16string& path, std::string& reason) {
  const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
  bool can_repair = true;
  HANDLE h = ::CreateFileW(w(path), READ_CONTROL | WRITE_DAC | FILE_READ_ATTRIBUTES, share,
                           nullptr, OPEN_EXISTING, flags, nullptr);
  if (h == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_ACCESS_DENIED) {
    can_repair = false;
    h = ::CreateFileW(w(path), READ_CONTROL | FILE_READ_ATTRIBUTES, share, nullptr,
                      OPEN_EXISTING, flags, nullptr);
  }
  if (h == INVALID_HANDLE_VALUE) {
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
      return folder_state_t::missing;
    }
    reason = "it cannot be opened (error " + std::to_string(error) + ")";
    return folder_state_t::refused;
  }
  folder_state_t state = folder_state_t::safe;
  BY_HANDLE_FILE_INFORMATION info = {};
  PSID owner = nullptr;
  PACL dacl = nullptr;
  PSECURITY_DESCRIPTOR sd = nullptr;
  const std::vector<BYTE> self = process_user_sid();
  bool repairable = false;
  if (!::GetFileInformationByHandle(h, &info)) {
    reason = "its attributes cannot be read";
    state = folder_state_t::refused;
  } else if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    reason = "it is a junction or a symbolic link";
    state = folder_state_t::refused;
  } else if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    reason = "it is not a folder";
    state = folder_state_t::refused;
  } else if (const DWORD error = ::GetSecurityInfo(
                 h, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                 &owner, nullptr, &dacl, nullptr, &sd);
             error != ERROR_SUCCESS) {
    reason = "its security cannot be read (error " + std::to_string(error) + ")";
    state = folder_state_t::refused;
  } else {
    reason = owner_and_list_problem(owner, dacl, self, repairable);
    if (!reason.empty()) state = folder_state_t::refused;
  }
  if (state == folder_state_t::refused && repairable) {
    // The owner is one of ours: the list is ours to mend.
    const auto safe = descriptor_of(repaired_sddl(dacl, self));
    PACL safe_dacl = nullptr;
    BOOL present = FALSE, defaulted = FALSE;
    if (can_repair && safe &&
        ::GetSecurityDescriptorDacl(safe.get(), &present, &safe_dacl, &defaulted) && present &&
        ::SetSecurityInfo(h, SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                          nullptr, nullptr, safe_dacl, nullptr) == ERROR_SUCCESS) {
      state = folder_state_t::repaired;
      reason.clear();
    }
  }
  if (sd != nullptr) ::LocalFree(sd);
  ::CloseHandle(h);
  return state;
}

uint32_t create_private_folder(const std::u16string& path) {
  const auto sd = safe_descriptor();
  if (!sd) return ::GetLastError() != 0 ? ::GetLastError() : ERROR_INVALID_SECURITY_DESCR;
  SECURITY_ATTRIBUTES attributes = {};
  attributes.nLength = sizeof attributes;
  attributes.lpSecurityDescriptor = sd.get();
  attributes.bInheritHandle = FALSE;
  if (::CreateDirectoryW(w(path), &attributes)) return 0;
  const DWORD error = ::GetLastError();
  return error != 0 ? error : ERROR_ACCESS_DENIED;
}

int entry_link_kind(const std::u16string& path) {
  const DWORD attributes = ::GetFileAttributesW(w(path));
  if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return 1;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return 0;
  HANDLE h = ::CreateFileW(w(path), FILE_READ_ATTRIBUTES,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (h == INVALID_HANDLE_VALUE) return 0;
  const int kind = handle_link_kind(reinterpret_cast<native_handle_t>(h));
  ::CloseHandle(h);
  return kind;
}

int handle_link_kind(native_handle_t handle) {
  BY_HANDLE_FILE_INFORMATION info = {};
  if (!::GetFileInformationByHandle(reinterpret_cast<HANDLE>(handle), &info)) return 0;
  return kind_of(info);
}

std::u16string full_path(const std::u16string& path) {
  std::u16string text = path;
  // A long-path prefix keeps Windows from folding anything; for recognising the folder the
  // folded form is what counts, so the prefix goes (and "\\?\UNC\" becomes "\\").
  if (text.size() >= 8 && text.compare(0, 4, u"\\\\?\\") == 0 &&
      (text[4] == u'U' || text[4] == u'u') && (text[5] == u'N' || text[5] == u'n') &&
      (text[6] == u'C' || text[6] == u'c') && text[7] == u'\\') {
    text = u"\\" + text.substr(7);
  } else if (text.size() >= 4 && text.compare(0, 4, u"\\\\?\\") == 0) {
    text = text.substr(4);
  }
  const DWORD needed = ::GetFullPathNameW(w(text), 0, nullptr, nullptr);
  if (needed == 0) return path;
  std::vector<wchar_t> buffer(needed + 1);
  const DWORD length = ::GetFullPathNameW(w(text), needed + 1, buffer.data(), nullptr);
  if (length == 0 || length > needed) return path;
  return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), length);
}

std::u16string safe_descriptor_text() { return widened(safe_sddl()); }

std::string descriptor_problem(const std::u16string& sddl, bool& repairable) {
  repairable = false;
  const auto sd = descriptor_of(std::wstring(sddl.begin(), sddl.end()));
  if (!sd) return "its security cannot be read";
  PSID owner = nullptr;
  BOOL defaulted = FALSE, present = FALSE;
  PACL dacl = nullptr;
  ::GetSecurityDescriptorOwner(sd.get(), &owner, &defaulted);
  ::GetSecurityDescriptorDacl(sd.get(), &present, &dacl, &defaulted);
  return owner_and_list_problem(owner, present ? dacl : nullptr, process_user_sid(), repairable);
}

}  // namespace win::sys
