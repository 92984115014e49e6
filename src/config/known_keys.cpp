// Permissions and mode bits are decimal: 320 is 0500, 448 is 0700.

#include "config/known_keys.h"

#include <vector>

namespace {

using enum ZnKeyLevel;
using D = ZnSMBNFSServerConfig;
using U = ZnSMBNFSUserConfig;
using M = ZnSMBNFSMachineConfig;
using S = ZnSMBNFSShareConfig;

constexpr int32_t kMost = INT32_MAX;
constexpr bool kAtStart = true;

constexpr ZnKeyValues kText{ZnKeyValues::Text};
constexpr ZnKeyValues kTexts{ZnKeyValues::Texts};
constexpr ZnKeyValues Number(int32_t minimum, int32_t maximum) { return {ZnKeyValues::Number, minimum, maximum}; }
constexpr ZnKeyValues kFlag = Number(0, 1);
constexpr ZnKeyValues kPort = Number(1, 65535);
constexpr ZnKeyValues kSeconds = Number(0, kMost);
constexpr ZnKeyValues kOwner = Number(-1, kMost);
constexpr ZnKeyValues kModeBits = Number(0, 07777);
constexpr ZnKeyValues kCharacter = Number(1, 65535);

constexpr ZnKnownKey kKeys[] = {
    {Daemon, "mount/port", "(4242)", kPort, &D::port, kAtStart},
    {Daemon, "mount/realserver", "(127.0.0.1)", kText},
    {Daemon, "mount/mountpoint", nullptr, kText},
    {Daemon, "mount/roothandle", nullptr, kText, {}, kAtStart},
    {Daemon, "network/addresses", "(_)", kTexts, &D::addresses, kAtStart},
    {Daemon, "network/reservedports", "(0)", kFlag, &D::reservedports, kAtStart},
    {Daemon, "server/encoding/rpc", nullptr, kText, {}, kAtStart},
    {Daemon, "server/encoding/default", "(ISO 8859-1)", kText},
    {Daemon, "server/encoding/defaultopt", "(0)", kText},
    {Daemon, "server/usercache/mode", "(2)", Number(0, 2), &D::usercachemode, kAtStart},
    {Daemon, "server/cleanupdelay", "(10)", Number(1, kMost), &D::cleanupdelay},
    {Daemon, "server/paranoidupdate", "(1)", kFlag, &D::paranoidupdate},
    {Daemon, "server/optimisticnodeinvalidation", "(1)", kFlag, &D::optimisticnodeinvalidation},
    {Daemon, "server/coredumps", "(0)", kFlag, &D::coredumps, kAtStart},
    {Daemon, "server/winsservers", "", kTexts, {}, kAtStart},
    {Daemon, "server/timezone", nullptr, kText, &D::timezone},
    {Daemon, "server/maximiselimits", nullptr, kFlag, &D::maximiselimits},
    {Daemon, "user/symlinkname", "(My Halden Drives)", kText, &D::symlinkname},
    {Daemon, "logging/filters", "(*/*/failure)", kTexts},
    {Daemon, "client/timeout", "(10)", kSeconds},

    {User, "machinenames", "(*)", kTexts, &U::machinenames},
    {User, "notmachines", "(ls)(cd)(..+)", kTexts, &U::notmachines},
    {User, "logfile", "(~%%USERNAME%%/.ostrelerrors)", kText, &U::logfile},
    {User, "unixname", "(*)", kText},
    {User, "uid", "(-1)", kOwner, &U::uid},
    {User, "gid", "(-1)", kOwner, &U::gid},
    {User, "unixperms", "(320)", kModeBits, &U::unixperms},
    {User, "rootaccess", nullptr, kFlag, &U::rootaccess},

    {Machine, "password", nullptr, kText, &M::password},
    {Machine, "cleartext", "(0)", kFlag, &M::cleartext},
    {Machine, "minauth", "(ntlm)", kText},
    {Machine, "signing", "(auto)", kText},
    {Machine, "winname", "(*)", kText, &M::winname},
    {Machine, "domain", "()", kText, &M::domain},
    {Machine, "ipaddress", "(*)", kText, &M::ipaddress},
    {Machine, "port", "(139)", kPort, &M::port},
    {Machine, "nbtname", "(*)", kText, &M::nbtname},
    {Machine, "dnslookup", "(1)", Number(0, 2), &M::dnslookup},
    {Machine, "sharenames", "(*)", kTexts, &M::sharenames},
    {Machine, "hidedollar", "(1)", kFlag, &M::hidedollar},
    {Machine, "encoding", "(UTF-8)", kText},
    {Machine, "oldsetattr", "(0)", kFlag, &M::oldsetattr},
    {Machine, "timeoffset", "(-1)", Number(-kMost, kMost), &M::timeoffset},
    {Machine, "smbtimeout", "(10)", kSeconds, &M::smbtimeout},
    {Machine, "sessiontimeout", "(300)", Number(1, kMost), &M::sessiontimeout},
    {Machine, "sharesttl", "(10)", kSeconds, &M::sharesttl},
    {Machine, "maxopenfiles", "(50)", Number(1, kMost), &M::maxopenfiles},
    {Machine, "treelimit", "(256)", Number(1, 65536), &M::treelimit},
    {Machine, "unixname", "(*)", kText},
    {Machine, "uid", "(-1)", kOwner, &M::uid},
    {Machine, "gid", "(-1)", kOwner, &M::gid},
    {Machine, "unixperms", "(320)", kModeBits, &M::unixperms},
    {Machine, "rootaccess", nullptr, kFlag, &M::rootaccess},

    {Share, "password", nullptr, kText, &S::password},
    {Share, "winname", "()", kText, &S::winname},
    {Share, "attribttl", "(10)", kSeconds, &S::attribttl},
    {Share, "contentsttl", "(10)", kSeconds, &S::contentsttl},
    {Share, "openfilettl", "(15)", kSeconds, &S::openfilettl},
    {Share, "directoryttl", "(15)", kSeconds},
    {Share, "syncwrites", "(1)", kFlag, &S::syncwrites},
    {Share, "showhidden", "(1)", kFlag, &S::showhidden},
    {Share, "lowercase", "(0)", kFlag, &S::lowercase},
    {Share, "matchlong", "(0)", kFlag, &S::matchlong},
    {Share, "matchshort", "(0)", kFlag, &S::matchshort},
    {Share, "matchcase", "(1)", kFlag, &S::matchcase},
    {Share, "allowednames", "(0)", Number(0, 16383), &S::allowednames},
    {Share, "bannedchars", "()", kText, &S::bannedchars},
    {Share, "manglechar", "(126)", kCharacter, &S::manglechar},
    {Share, "hashchars", R"((?"<>*|:))", kText, &S::hashchars},
    {Share, "hashchar", "(59)", kCharacter, &S::hashchar},
    {Share, "hashmethod", "(0)", kFlag, &S::hashmethod},
    {Share, "linkstring", R"((-\)))", kText, &S::linkstring},
    {Share, "unixperms", "(448)", kModeBits, &S::unixperms},
    {Share, "nosetreadonly", "(1)", kFlag, &S::nosetreadonly},
    {Share, "hidden", "(0)", kModeBits, &S::hidden},
    {Share, "system", "(0)", kModeBits, &S::system},
    {Share, "archive", "(0)", kModeBits, &S::archive},
    {Share, "unixname", "(*)", kText},
    {Share, "uid", "(-1)", kOwner, &S::uid},
    {Share, "gid", "(-1)", kOwner, &S::gid},
    {Share, "rootaccess", "(1)", kFlag, &S::rootaccess},
};

}  // namespace

std::span<const ZnKnownKey> ZnKnownKeys() { return kKeys; }

ZnUniString ZnKnownKey::Full(std::span<const ZnUniString> names) const {
  ZnUniString key = level == Daemon ? "nfsserver/" : "nfsserver/shares/smb/";
  for (const ZnUniString& each : names) key += each + "/";
  return key + name;
}

ZnUniString ZnKnownKey::Full() const {
  return Full(std::vector<ZnUniString>(static_cast<size_t>(level), ZnUniString("*")));
}

const ZnUniString& ZnDefaultsText() {
  static const ZnUniString text = [] {
    ZnUniString lines;
    for (const ZnKnownKey& key : kKeys) {
      if (key.preset) lines += "[" + key.Full() + "={" + key.preset + "}]\n";
    }
    return lines;
  }();
  return text;
}
