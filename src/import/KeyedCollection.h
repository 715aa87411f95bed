// A collection that keeps the order in which its items were added and finds them by key, letter case aside.
#pragma once

#include <cstddef>
#include <deque>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/Formats.h"

namespace scorvane::import {

// A key that is there already, or a key or place that is not.
class CollectionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

template <typename Info>
class KeyedCollection {
 public:
  int Count() const { return static_cast<int>(entries_.size()); }

  // By place, from 1, or by key. Both throw CollectionError.
  const Info& Item(int index) const { return entries_[Place(index)].info; }
  const Info& Item(std::string_view key) const { return entries_[Place(key)].info; }
  bool Contains(std::string_view key) const { return places_.contains(common::LowerCase(key)); }

  void Remove(int index) { RemoveAt(Place(index)); }
  void Remove(std::string_view key) { RemoveAt(Place(key)); }

  class Iterator {
   public:
    Iterator(const KeyedCollection& all, std::size_t at) : all_(all), at_(at) {}
    const Info& operator*() const { return all_.entries_[at_].info; }
    Iterator& operator++() {
      ++at_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return at_ != other.at_; }

   private:
    const KeyedCollection& all_;
    std::size_t at_;
  };
  Iterator begin() const { return Iterator(*this, 0); }
  Iterator end() const { return Iterator(*this, entries_.size()); }

 protected:
  // An item without a key is found by its place alone. The reference holds until an item is removed. Throws
  // CollectionError.
  Info& AddItem(Info info, std::string_view key) {
    std::string folded = common::LowerCase(key);
    if (!folded.empty() && !places_.emplace(folded, entries_.size()).second)
      throw CollectionError("This key is already associated with an element of this collection.");
    entries_.push_back({std::move(info), std::move(folded)});
    return entries_.back().info;
  }

 private:
  struct Entry {
    Info info;
    std::string key;
  };

  std::size_t Place(int index) const {
    if (index < 1 || index > Count()) throw CollectionError("There is no such place in this collection.");
    return static_cast<std::size_t>(index - 1);
  }
  std::size_t Place(std::string_view key) const {
    const auto found = places_.find(common::LowerCase(key));
    if (found == places_.end()) throw CollectionError("There is no such key in this collection.");
    return found->second;
  }
  void RemoveAt(std::size_t place) {
    places_.erase(entries_[place].key);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
    for (auto& [key, at] : places_) {
      if (at > place) --at;
    }
  }

  std::deque<Entry> entries_;
  std::unordered_map<std::string, std::size_t> places_;  // by the key in small letters
};

}  // namespace scorvane::import
