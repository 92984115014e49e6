// Which names a client may make.

#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/name_gen.h"
#include "tree/safe_name.h"

namespace {

using E = ZnSMBNFSEnum;

ZnUniString UpperOf(ZnUniString name) {
  name.UpperCase();
  return name;
}

ZnUniString LowerOf(ZnUniString name) {
  name.LowerCase();
  return name;
}

// The mangle character stands before the last but one character of the base.
bool LooksMangled(const ZnUniString& name, char16_t manglechar) {
  size_t base = std::min(name.SearchReverse(u'.'), name.Length());
  size_t mangle = name.Search(manglechar);
  return mangle != ZnUniString::kNotFound && mangle + 1 < base;
}

// The rules that look at the name alone.
struct Rule {
  E::AllowedNames flag;
  bool (*refuses)(const ZnUniString& name, const ZnSMBNFSShareConfig& config);
};

constexpr Rule kRules[] = {
    {E::ANNoReserved, [](const ZnUniString& n, const ZnSMBNFSShareConfig&) { return ZnNameGen::IsReservedName(n); }},
    {E::ANMustBeUpper, [](const ZnUniString& n, const ZnSMBNFSShareConfig&) { return UpperOf(n) != n; }},
    {E::ANMustBeLower, [](const ZnUniString& n, const ZnSMBNFSShareConfig&) { return LowerOf(n) != n; }},
    {E::ANMustBeLong, [](const ZnUniString& n, const ZnSMBNFSShareConfig&) { return ZnNameGen::ToLongName(n) != n; }},
    {E::ANMustBeShort,
     [](const ZnUniString& n, const ZnSMBNFSShareConfig&) { return ZnNameGen::ToShortName(UpperOf(n)) != UpperOf(n); }},
    {E::ANNoMangled, [](const ZnUniString& n,
                        const ZnSMBNFSShareConfig& c) { return LooksMangled(n, static_cast<char16_t>(c.manglechar)); }},
};

bool Has(const ZnSMBNFSShareConfig& config, E::AllowedNames flag) { return (config.allowednames & flag) != 0; }

bool MatchesEntry(ZnSMBNFSNode* directory, const ZnUniString& name, const ZnSMBNFSNode* besides,
                  ZnUniString (*form)(const ZnUniString&)) {
  ZnUniString wanted = form(name);
  for (const auto& child : directory->children) {
    if (child.value != besides && form(child.key) == wanted) return true;
  }
  return false;
}

}  // namespace

bool ZnSMBNFSFileSystem::ValidateName(ZnSMBNFSNode* directory, const ZnUniString& name,
                                      const ZnSMBNFSShareConfig& config, const ZnSMBNFSNode* besides) {
  for (char16_t unit : name.View()) {
    if (config.bannedchars.Search(unit) != ZnUniString::kNotFound) return false;
  }
  for (const Rule& rule : kRules) {
    if (Has(config, rule.flag) && rule.refuses(name, config)) return false;
  }
  if (Has(config, E::ANNoShortMatch) && MatchesEntry(directory, name, besides, ZnNameGen::ToShortName)) return false;
  return !Has(config, E::ANNoLongMatch) || !MatchesEntry(directory, name, besides, ZnNameGen::ToLongName);
}

ZnNFSEnum::Status ZnSMBNFSFileSystem::NameStatus(ZnSMBNFSNode* directory, const ZnUniString& name,
                                                 const ZnSMBNFSNode* besides) {
  ZnSMBNFSTree* tree = GetTree(directory);
  if (!tree) return ZnNFSEnum::NFSERR_ACCES;
  if (ZnIsTooLong(name)) return ZnNFSEnum::NFSERR_NAMETOOLONG;
  // What clients see of a link has no mark, and mustn't be one of these names either.
  const ZnUniString shown = FromLinkName(name, tree->config.linkstring);
  if (ZnLeavesDirectory(shown) || ZnLeavesDirectory(InternalToWindowsName(shown, tree->config)))
    return ZnNFSEnum::NFSERR_ACCES;
  return ValidateName(directory, name, tree->config, besides) ? ZnNFSEnum::NFS_OK : ZnNFSEnum::NFSERR_ACCES;
}
