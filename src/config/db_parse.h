#pragma once
// The text form of the configuration, read and written.
//
//   [key={(value)(value)}]
//
// Entries, with white space and comments (from "#" to the end of the line) between them and between the marks of an
// entry, but not inside keys and values, where every character counts. In these, a backslash takes the next character
// as it is. A line between entries that begins with "##" is a header line, for whoever opens the file.

#include "config/database.h"

class ZnDBParse {
 public:
  // `text` is parsed once; entries get `tag`.
  ZnDBParse(const ZnUniString& text, int32_t tag) : text_(text), tag_(tag) {}

  // Adds the entries of the text to `database` as far as they go; false at the first error.
  bool Parse(ZnDatabase& database);
  // "Success", or what stood where, and what was looked for.
  ZnUniString ErrorString() const;

  // The text of the entries with this tag, of all for a negative one.
  static ZnUniString ToString(ZnDatabase& database, int32_t tag);

 private:
  // What the parser looks at.
  enum State {
    BetweenEntries = 0,
    InKey = 2,
    EscapedInKey = 3,
    AfterKey = 4,
    InValues = 5,
    AfterValues = 6,
    InValue = 7,
    EscapedInValue = 8,
  };
  // Errors have the number of the state that they happen in, apart from this.
  static constexpr int kNoError = 0;
  static constexpr int kNoEntry = 1;

  bool AtEnd() const { return position_ == text_.Length(); }
  char16_t Here() const { return text_[position_]; }
  char16_t Take();
  bool AtHeaderLine() const;
  bool MaySkip() const;
  bool SkipIrrelevant();
  bool Step(ZnDatabase& database);
  // Takes `mark` and goes to `next`, or fails with `error`.
  bool Expect(char16_t mark, State next, int error);
  void TakeInto(std::u16string& piece, char16_t end, State escaped, State next);
  void TakeEscaped(std::u16string& piece, State next);
  void StartEntry(ZnDatabase& database);

  ZnUniString text_;
  int32_t tag_;
  size_t position_ = 0;
  size_t line_ = 1;
  size_t column_ = 1;
  State state_ = BetweenEntries;
  size_t entryline_ = 1;  // where the last entry begins
  size_t entrycolumn_ = 1;
  int error_ = kNoError;
  std::u16string comment_;  // in front of the next entry
  std::u16string key_;
  std::u16string value_;
  ZnDBEntry* entry_ = nullptr;  // the one whose values are being read
};
