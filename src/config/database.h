#pragma once
// The configuration as data: keys, each with a list of values. A key is a path of names between slashes; that some
// names are wildcards is the business of who looks keys up.

#include "runtime/dictionary.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

struct ZnDBEntry {
  ZnDList<ZnUniString> values;  // in order; values may repeat
  int32_t tag = 0;
  ZnUniString comment;  // the text in front of the entry: comments and white space
  // Where the entry begins in the text that it was parsed from, from 1; 0 for one that wasn't parsed.
  size_t line = 0;
  size_t column = 0;

  // Appends all values to `list`.
  void Values(ZnDList<ZnUniString>& list) const;
};

class ZnDatabase {
 public:
  // The lines at the head of a user file.
  static const char* const fileheader;

  // Parses `text`, in the form that db_parse.h describes, on top of what is here: a key of the text replaces the same
  // key. Entries of the text get this tag. False at the first error; the entries in front of it stay.
  bool FromString(const ZnUniString& text, int32_t tag);
  // What the last FromString met: "Success", or where the text is wrong and what was expected there.
  const ZnUniString& ErrorString() const { return errorstring_; }
  // The text of the entries with this tag, of all for a negative one. In the dictionary's order: each entry's comment,
  // and the entry on a line of its own.
  ZnUniString ToString(int32_t tag);

  bool KeyExists(const ZnUniString& key) const { return entries_.Find(key) != nullptr; }
  // Leaves the key without values, making it if it isn't there.
  void ClearKey(const ZnUniString& key);
  // Adds a value behind the others, making the key if it isn't there.
  void AppendValue(const ZnUniString& key, const ZnUniString& value);
  // Null for a key that isn't there.
  const ZnDBEntry* Find(const ZnUniString& key) const { return entries_.Find(key); }
  // Appends the values of the key; none for a key that isn't there.
  void ListValues(const ZnUniString& key, ZnDList<ZnUniString>& list) const;
  // Removes the key and all below it; everything for an empty key.
  void RemoveKeys(const ZnUniString& key);
  // Appends the names one level below `key`, those that `list` doesn't have yet; for an empty key every key in full.
  // In the dictionary's order.
  void ListKeys(const ZnUniString& key, ZnDList<ZnUniString>& list);

  // The tag of a key, -1 if it isn't there.
  int32_t Tag(const ZnUniString& key) const;
  // These do nothing for a key that isn't there.
  void Tag(const ZnUniString& key, int32_t tag);
  void Comment(const ZnUniString& key, const ZnUniString& text);

 private:
  friend class ZnDBParse;  // writes entries in their order

  ZnDBEntry& EntryOf(const ZnUniString& key);

  ZnDictionary<ZnUniString, ZnDBEntry> entries_;
  ZnUniString errorstring_ = "Success";
};
