#pragma once
// What requests about a path have in common.

#include "smb/client/conversation.h"
#include "smb/wire/encodings.h"

// What a search may find besides ordinary files.
inline ZnSMBCFileAttributes ZnSmbHiddenAndSystem() {
  ZnSMBCFileAttributes attribs;
  attribs.hidden = attribs.system = true;
  return attribs;
}

// A data section that consists of one path.
template <class Data>
Data ZnSmbPathData(const ZnSmbConversation& conversation, const ZnUniString& path) {
  Data data(conversation.RequestEncoding());
  data.path = path;
  return data;
}
