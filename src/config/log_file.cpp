#include "config/log_file.h"

#include "runtime/file.h"

ZnUniString ZnExpandLogFile(const ZnUniString& configured, const ZnUniString& user) {
  ZnUniString path = configured;
  path.Substitute("%%USERNAME%%", user);
  ZnFile::PathnameExpand(path);
  return path;
}
