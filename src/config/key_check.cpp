#include "config/key_check.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

#include "config/known_keys.h"

namespace {

constexpr size_t kMostTold = 20;
constexpr size_t kLongestCompared = 200;
constexpr size_t kPrefixParts = 3;  // "nfsserver/shares/smb"

using Parts = std::vector<ZnUniString>;

Parts PartsOf(const ZnUniString& key) {
  auto parts = key.Split(u'/');
  return {parts.begin(), parts.end()};
}

// The key with "*" in place of what names a user, a machine and a share.
ZnUniString PatternOf(const ZnUniString& key) {
  static const ZnUniString prefix = "nfsserver/shares/smb/";
  if (!key.StartsWith(prefix)) return key;
  ZnUniString pattern = prefix;
  const Parts parts = PartsOf(key);
  for (size_t i = kPrefixParts; i + 1 < parts.size(); i++) pattern += "*/";
  return pattern + parts.back();
}

const ZnKnownKey* FindKnown(const ZnUniString& key) {
  static const std::unordered_map<ZnUniString, const ZnKnownKey*> known = [] {
    std::unordered_map<ZnUniString, const ZnKnownKey*> keys;
    for (const ZnKnownKey& each : ZnKnownKeys()) keys.emplace(each.Full(), &each);
    return keys;
  }();
  auto found = known.find(PatternOf(key));
  return found == known.end() ? nullptr : found->second;
}

// Decimal digits, with a minus sign in front if need be, and nothing else.
std::optional<int64_t> NumberOf(const ZnUniString& text) {
  constexpr size_t kMostDigits = 15;
  std::u16string_view digits = text.View();
  const bool negative = digits.starts_with(u'-');
  if (negative) digits.remove_prefix(1);
  if (digits.empty() || digits.size() > kMostDigits) return std::nullopt;
  int64_t number = 0;
  for (char16_t unit : digits) {
    if (unit < u'0' || unit > u'9') return std::nullopt;
    number = number * 10 + (unit - u'0');
  }
  return negative ? -number : number;
}

ZnUniString Decimal(int64_t number) {
  const auto digits = ZnUniString::CreateFromUnsigned(static_cast<uint64_t>(number < 0 ? -number : number));
  return number < 0 ? "-" + digits : digits;
}

bool Fits(const ZnKeyValues& wanted, const ZnDBEntry& entry) {
  if (wanted.kind != ZnKeyValues::Number) return true;
  const std::optional<int64_t> number = entry.values.Count() == 1 ? NumberOf(entry.values[0]) : std::nullopt;
  return number && *number >= wanted.minimum && *number <= wanted.maximum;
}

ZnUniString Place(const ZnDBEntry& entry) {
  return " at character " + ZnUniString::CreateFromUnsigned(entry.column) + " in line " +
         ZnUniString::CreateFromUnsigned(entry.line);
}

// A key may be as long as the file.
ZnUniString Shown(const ZnUniString& key) {
  return key.Length() > kLongestCompared ? key.SubString(0, kLongestCompared) + "..." : key;
}

// How many letters have to be put in, left out or changed to make one text the other.
size_t Distance(std::u16string_view a, std::u16string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); j++) row[j] = j;
  for (size_t i = 1; i <= a.size(); i++) {
    size_t diagonal = std::exchange(row[0], i);
    for (size_t j = 1; j <= b.size(); j++) {
      const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({changed, row[j] + 1, row[j - 1] + 1}));
    }
  }
  return row.back();
}

ZnUniString AndMore(size_t count) {
  return "and " + ZnUniString::CreateFromUnsigned(count - kMostTold) + " more of this kind";
}

// The known key that is nearest to `key` by the letters that would have to change, with the names of user, machine and
// share that `key` has, as far as it has them. Empty for a key that is longer than any could be.
ZnUniString NearestKey(const ZnUniString& key) {
  if (key.Length() > kLongestCompared) return {};
  const Parts parts = PartsOf(key);
  ZnUniString nearest;
  size_t least = SIZE_MAX;
  for (const ZnKnownKey& known : ZnKnownKeys()) {
    // A key at the wrong level is nearest to the one of its own name at the right level.
    Parts names(static_cast<size_t>(known.level), ZnUniString("*"));
    for (size_t i = 0; i < names.size() && kPrefixParts + i + 1 < parts.size(); i++) names[i] = parts[kPrefixParts + i];
    ZnUniString candidate = known.Full(names);
    const size_t distance = Distance(key.View(), candidate.View());
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace

ZnUniString ZnMistakeOf(const ZnUniString& key, const ZnDBEntry& entry) {
  const ZnKnownKey* known = FindKnown(key);
  if (!known || Fits(known->values, entry)) return {};
  return "Error: the value of " + key + Place(entry) + " must be one number from " + Decimal(known->values.minimum) +
         " to " + Decimal(known->values.maximum);
}

ZnKeyFindings ZnCheckKeys(ZnDatabase& database) {
  std::vector<std::pair<ZnUniString, const ZnDBEntry*>> entries;
  ZnDList<ZnUniString> keys;
  database.ListKeys({}, keys);
  for (const ZnUniString& key : keys) entries.emplace_back(key, database.Find(key));
  std::ranges::sort(entries, {}, [](const auto& each) { return std::pair(each.second->line, each.second->column); });

  ZnKeyFindings findings;
  size_t mistakes = 0;
  size_t warnings = 0;
  for (const auto& [key, entry] : entries) {
    if (!FindKnown(key)) {
      if (++warnings > kMostTold) continue;
      const ZnUniString nearest = NearestKey(key);
      findings.warnings.Append("Unknown key " + Shown(key) + Place(*entry) +
                               (nearest.IsEmpty() ? ZnUniString() : "; the nearest known one is " + nearest));
    } else if (const ZnUniString mistake = ZnMistakeOf(key, *entry); !mistake.IsEmpty()) {
      if (++mistakes <= kMostTold) findings.mistakes += (mistakes > 1 ? "\n" : "") + mistake;
    }
  }
  if (mistakes > kMostTold) findings.mistakes += "\n" + AndMore(mistakes);
  if (warnings > kMostTold) findings.warnings.Append(AndMore(warnings));
  return findings;
}
