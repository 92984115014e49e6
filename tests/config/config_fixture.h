#pragma once
// A configuration loaded from texts, with files of its own for them.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "config/smbnfs_config.h"

inline std::string Joined(const ZnDList<ZnUniString>& list) {
  std::string joined;
  for (const ZnUniString& text : list) joined += (joined.empty() ? "" : ",") + text.AsUtf8();
  return joined;
}

class ConfigTest : public testing::Test {
 protected:
  ConfigTest() : directory_(testing::TempDir() + "config.XXXXXX") {
    EXPECT_NE(mkdtemp(directory_.data()), nullptr);
    Write("profile", "");
  }
  ~ConfigTest() override {
    ZnSMBNFSConfig::CleanUp();
    std::filesystem::remove_all(directory_);
  }

  std::string Path(const std::string& name) const { return directory_ + "/" + name; }
  void Write(const std::string& name, const std::string& text) const { std::ofstream(Path(name)) << text; }

  // Loads anew from the files "profile" and "user" and the text of a command line; gives the error text.
  std::string Initialise(const std::string& commandLine = "", bool useCaches = false) const {
    ZnSMBNFSConfig::CleanUp();
    return ZnSMBNFSConfig::Initialise(Path("profile"), Path("user"), commandLine, useCaches).AsUtf8();
  }
  std::string Load(const std::string& profile, const std::string& user = "") const {
    Write("profile", profile);
    Write("user", user);
    return Initialise();
  }
  // The single value found for these names, or what there is instead.
  static std::string Value(const char* user, const char* machine, const char* share, const char* key) {
    ZnUniString value = "(untouched)";
    return ZnSMBNFSConfig::GetValue("nfsserver/shares/smb/", user, machine, share, key, value) ? value.AsUtf8()
                                                                                               : "(none)";
  }
  // The same without a user.
  static std::string Global(const char* key) {
    ZnUniString value;
    return ZnSMBNFSConfig::GetGlobalValue(key, value) ? value.AsUtf8() : "(none)";
  }

 private:
  std::string directory_;
};
