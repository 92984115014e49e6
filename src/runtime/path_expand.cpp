// "~" and "~name" at the head of paths.

#include <unistd.h>

#include "runtime/file.h"
#include "runtime/user_database.h"

void ZnFile::PathnameExpand(ZnUniString& path) {
  if (path.IsEmpty() || path[0] != u'~') return;
  size_t slash = path.Search(u'/');
  size_t end = slash == ZnUniString::kNotFound ? path.Length() : slash;
  ZnUserDatabaseIterator users;
  bool found = end == 1 ? users.Find(getuid()) : users.Find(path.SubString(1, end - 1));
  if (!found) return;
  path = users.Current().HomeDirectory() + path.SubString(end);
}
