// Where the product keeps its settings and files on a machine; the configuration, the log and
// the file layer all read these.
#pragma once

namespace product {

// The settings key, below HKEY_LOCAL_MACHINE.
constexpr char16_t kSettingsKey[] = u"SOFTWARE\\Trelo\\Trelo Safekeep";
// The data folder, below the machine's common application data folder.
constexpr char16_t kDataFolder[] = u"Trelo\\Backup";

}  // namespace product
