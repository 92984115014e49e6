#include "config/db_parse.h"

#include <array>

namespace {

// What was looked for, by error. 5 names two marks and 0 isn't an error.
constexpr std::array<const char*, 9> kExpected = {"", "[", "=", "=", "{", R"((" or "})", "]", ")", ")"};

// Written with a backslash; all other characters stand as they are.
bool NeedsEscape(char16_t unit) { return unit == u')' || unit == u'=' || unit == u'\\'; }

void AppendQuoted(std::u16string& out, const ZnUniString& text) {
  for (char16_t unit : text.View()) {
    if (NeedsEscape(unit)) out += u'\\';
    out += unit;
  }
}

}  // namespace

bool ZnDBParse::Parse(ZnDatabase& database) {
  while (!AtEnd()) {
    if (MaySkip() && SkipIrrelevant()) continue;
    if (!Step(database)) return false;
  }
  error_ = state_;
  return error_ == kNoError;
}

bool ZnDBParse::Step(ZnDatabase& database) {
  switch (state_) {
    case BetweenEntries:
      key_.clear();
      entryline_ = line_;
      entrycolumn_ = column_;
      return Expect(u'[', InKey, kNoEntry);
    case InKey:
      TakeInto(key_, u'=', EscapedInKey, AfterKey);
      return true;
    case EscapedInKey:
      TakeEscaped(key_, InKey);
      return true;
    case AfterKey:
      if (!Expect(u'{', InValues, AfterKey)) return false;
      StartEntry(database);
      return true;
    case InValues:
      value_.clear();
      return Here() == u'}' ? Expect(u'}', AfterValues, InValues) : Expect(u'(', InValue, InValues);
    case AfterValues:
      return Expect(u']', BetweenEntries, AfterValues);
    case InValue:
      TakeInto(value_, u')', EscapedInValue, InValues);
      if (state_ == InValues) entry_->values.Append(ZnUniString(value_));
      return true;
    case EscapedInValue:
      TakeEscaped(value_, InValue);
      return true;
  }
  return false;
}

void ZnDBParse::StartEntry(ZnDatabase& database) {
  // The entry is kept for its values: finding it for each would cost the length of the key times their number.
  entry_ = &database.EntryOf(ZnUniString(key_));
  entry_->values.Flush();
  entry_->comment = ZnUniString(comment_);
  entry_->tag = tag_;
  entry_->line = entryline_;
  entry_->column = entrycolumn_;
  comment_.clear();
}

bool ZnDBParse::Expect(char16_t mark, State next, int error) {
  if (Here() != mark) {
    error_ = error;
    return false;
  }
  Take();
  state_ = next;
  return true;
}

void ZnDBParse::TakeInto(std::u16string& piece, char16_t end, State escaped, State next) {
  char16_t unit = Take();
  if (unit == u'\\') {
    state_ = escaped;
  } else if (unit == end) {
    state_ = next;
  } else {
    piece += unit;
  }
}

void ZnDBParse::TakeEscaped(std::u16string& piece, State next) {
  piece += Take();
  state_ = next;
}

char16_t ZnDBParse::Take() {
  char16_t unit = Here();
  position_++;
  column_++;
  if (unit == u'\n') {
    line_++;
    column_ = 1;
  }
  return unit;
}

bool ZnDBParse::AtHeaderLine() const {
  return state_ == BetweenEntries && column_ == 1 && text_.View().substr(position_, 2) == u"##";
}

bool ZnDBParse::MaySkip() const {
  return state_ == BetweenEntries || state_ == AfterKey || state_ == InValues || state_ == AfterValues;
}

// Gives whether anything was skipped. Between entries, what was skipped is the comment of the next one, without header
// lines and empty lines.
bool ZnDBParse::SkipIrrelevant() {
  size_t start = position_;
  std::u16string skipped;
  while (!AtEnd()) {
    char16_t unit = Here();
    if (unit == u'#') {
      bool header = AtHeaderLine();
      while (!AtEnd() && Here() != u'\n') {
        char16_t taken = Take();
        if (!header) skipped += taken;
      }
      if (header && !AtEnd()) Take();
    } else if (unit == u'\n') {
      Take();
      if (!skipped.empty() && skipped.back() != u'\n') skipped += unit;
    } else if (unit == u'\t' || unit == u'\r' || unit == u' ') {
      skipped += Take();
    } else {
      break;
    }
  }
  if (position_ == start) return false;
  if (state_ == BetweenEntries) comment_ = std::move(skipped);
  return true;
}

ZnUniString ZnDBParse::ErrorString() const {
  if (error_ == kNoError) return "Success";
  ZnUniString found = AtEnd() ? ZnUniString("(EOF)") : text_.SubString(position_, 1);
  return "Error: found \"" + found + "\" at character " + ZnUniString::CreateFromUnsigned(column_) + " in line " +
         ZnUniString::CreateFromUnsigned(line_) + " whilst looking for \"" + kExpected[static_cast<size_t>(error_)] +
         "\"";
}

ZnUniString ZnDBParse::ToString(ZnDatabase& database, int32_t tag) {
  std::u16string out;
  for (const auto& [key, entry] : database.entries_) {
    if (tag >= 0 && entry.tag != tag) continue;
    out += entry.comment.View();
    out += u'[';
    AppendQuoted(out, key);
    out += u"={";
    for (const ZnUniString& value : entry.values) {
      out += u'(';
      AppendQuoted(out, value);
      out += u')';
    }
    out += u"}]\n";
  }
  return ZnUniString(out);
}
