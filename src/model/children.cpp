#include "model/children.h"

bool ZnSMBNFSChildren::Insert(const ZnUniString& name, const ZnSMBNFSChild& child) {
  if (!table_) table_ = std::make_unique<Table>();
  const Entry* entry = table_->byname.Add(name, child);
  if (!entry) return false;
  // A new node's id is the highest; one that was moved here has an older one.
  std::deque<Place>& byid = table_->byid;
  if (byid.empty() || byid.back().id < child.id) {
    byid.push_back({child.id, entry});
  } else if (auto place = PlaceOf(child.id); place->id == child.id && !place->entry) {
    place->entry = entry;
    table_->gone--;
  } else {
    byid.insert(place, {child.id, entry});
  }
  return true;
}

// Places are given up later, many at a time: to close each gap at once would move all that is behind it.
bool ZnSMBNFSChildren::Remove(const ZnUniString& name) {
  const Entry* entry = table_ ? table_->byname.FindEntry(name) : nullptr;
  if (!entry) return false;
  std::deque<Place>& byid = table_->byid;
  auto place = PlaceOf(entry->value.id);
  while (place->entry != entry) ++place;  // ids that came round may be there twice
  place->entry = nullptr;
  table_->gone++;
  table_->byname.Remove(name);
  if (table_->gone > byid.size() / 2) {
    std::erase_if(byid, [](const Place& each) { return !each.entry; });
    table_->gone = 0;
  }
  return true;
}

ZnSMBNFSChildren::Falling::Falling(const ZnSMBNFSChildren& children, uint32_t highest) : children_(children), left_(0) {
  if (!children.table_) return;
  const std::deque<Place>& byid = children.table_->byid;
  left_ = static_cast<size_t>(std::ranges::upper_bound(byid, highest, {}, &Place::id) - byid.begin());
}

const ZnSMBNFSChildren::Entry* ZnSMBNFSChildren::Falling::Next() {
  while (left_ > 0) {
    if (const Entry* entry = children_.table_->byid[--left_].entry) return entry;
  }
  return nullptr;
}
