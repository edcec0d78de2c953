#pragma once

#include <velmora/Error.h>
#include <velmora/IndexKey.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmora {

// The shape of every list of the library: elements held as shared references in a dense,
// 1-based sequence, each with an optional key that is unique without regard to case.
// Position lookups are constant time; key lookups are constant time through a hash map.
template <class T>
class KeyedCollection {
  public:
    using Element = std::shared_ptr<T>;
    using const_iterator = typename std::vector<Element>::const_iterator;

    int32_t Count() const { return static_cast<int32_t>(items_.size()); }

    Element Item(const IndexKey& vntIndexKey) const {
        if (vntIndexKey.isKey() && !vntIndexKey.isNone()) {
            const auto found = byKey_.find(foldKey(vntIndexKey.key()));
            if (found == byKey_.end()) detail::raisePlatformError(5);
            return found->second;
        }
        return items_[indexOf(vntIndexKey)];
    }

    // Adds `element` (or a new T when null) under `sKey`, in front of `bfrIndexKey` when given.
    // A failed Add leaves the list as it was.
    Element Add(Element element, const std::string& sKey, const IndexKey& bfrIndexKey) {
        std::size_t at = items_.size();
        if (!bfrIndexKey.isNone()) at = indexOf(bfrIndexKey);
        std::string folded;
        if (!sKey.empty()) {
            folded = foldKey(sKey);
            if (byKey_.count(folded) != 0) detail::raisePlatformError(457);
        }
        if (!element) element = std::make_shared<T>();
        items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at), element);
        if (!sKey.empty() || !keys_.empty()) {
            if (keys_.empty()) keys_.resize(items_.size() - 1);
            keys_.insert(keys_.begin() + static_cast<std::ptrdiff_t>(at), folded);
            if (!folded.empty()) byKey_.emplace(folded, element);
        }
        return element;
    }

    void Remove(const IndexKey& vntIndexKey) { eraseAt(indexOf(vntIndexKey)); }

    const_iterator begin() const { return items_.begin(); }
    const_iterator end() const { return items_.end(); }

    // Direct access for the library's own loops: 0-based, unchecked.
    const std::vector<Element>& elements() const { return items_; }
    const Element& at0(std::size_t index) const { return items_[index]; }

    void reserve(std::size_t count) { items_.reserve(count); }

    // Appends without a key; the fast path of the section readers.
    void append(Element element) {
        items_.push_back(std::move(element));
        if (!keys_.empty()) keys_.emplace_back();
    }

    // Inserts without a key in front of the 0-based index (size() appends).
    void insertAt(std::size_t index, Element element) {
        items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), std::move(element));
        if (!keys_.empty()) keys_.insert(keys_.begin() + static_cast<std::ptrdiff_t>(index), {});
    }

    void eraseAt(std::size_t index) {
        if (!keys_.empty()) {
            if (!keys_[index].empty()) byKey_.erase(keys_[index]);
            keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
        }
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    // Replaces the whole sequence (unkeyed); used by bulk edits that rebuild a list in one pass.
    void assign(std::vector<Element> elements) {
        items_ = std::move(elements);
        keys_.clear();
        byKey_.clear();
    }

    // The key of the element at a 0-based index, as stored (case folded); "" for none.
    std::string keyAt0(std::size_t index) const {
        return keys_.empty() ? std::string() : keys_[index];
    }

    // Replaces the whole sequence, each element with the key at its place ("" for none); the
    // keys must be unique. Used by bulk edits that rebuild a keyed list in one pass.
    void assign(std::vector<Element> elements, std::vector<std::string> keys) {
        byKey_.clear();
        bool anyKey = false;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (keys[i].empty()) continue;
            anyKey = true;
            byKey_.emplace(keys[i], elements[i]);
        }
        items_ = std::move(elements);
        keys_ = anyKey ? std::move(keys) : std::vector<std::string>();
    }

    // Empties the list from the last element to the first.
    void clear() {
        while (!items_.empty())
            items_.pop_back();
        keys_.clear();
        byKey_.clear();
    }

  private:
    static std::string foldKey(const std::string& key) {
        std::string folded = key;
        for (char& c : folded) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        }
        return folded;
    }

    // 0-based index of the element that `k` names; error 9 for a bad position, 5 for an
    // unknown key or none at all.
    std::size_t indexOf(const IndexKey& k) const {
        if (k.isPosition()) {
            const int64_t position = k.position();
            if (position < 1 || position > static_cast<int64_t>(items_.size())) {
                detail::raisePlatformError(9);
            }
            return static_cast<std::size_t>(position - 1);
        }
        if (k.isNone() || keys_.empty()) detail::raisePlatformError(5);
        const std::string folded = foldKey(k.key());
        if (byKey_.count(folded) == 0) detail::raisePlatformError(5);
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            if (keys_[i] == folded) return i;
        }
        detail::raisePlatformError(5);
    }

    std::vector<Element> items_;
    std::vector<std::string> keys_;  // parallel to items_ once any element has a key
    std::unordered_map<std::string, Element> byKey_;
};

// What the seven list classes share: Add, Item, Count, Remove and iteration in position order,
// over a KeyedCollection. A list whose Add can place the new element in front of another
// (`Placed`) takes that element as Add's third argument.
template <class T, bool Placed = false>
class KeyedList {
  public:
    using const_iterator = typename KeyedCollection<T>::const_iterator;

    std::shared_ptr<T> Add(std::shared_ptr<T> element = nullptr,
                           const std::string& sKey = "") requires(!Placed) {
        return items_.Add(std::move(element), sKey, IndexKey());
    }
    std::shared_ptr<T> Add(std::shared_ptr<T> element = nullptr, const std::string& sKey = "",
                           IndexKey bfrIndexKey = "") requires(Placed) {
        return items_.Add(std::move(element), sKey, bfrIndexKey);
    }
    std::shared_ptr<T> Item(IndexKey vntIndexKey) const { return items_.Item(vntIndexKey); }
    int32_t Count() const { return items_.Count(); }
    void Remove(IndexKey vntIndexKey) { items_.Remove(vntIndexKey); }
    const_iterator begin() const { return items_.begin(); }
    const_iterator end() const { return items_.end(); }

    // The elements for the library's own loops.
    const KeyedCollection<T>& elements() const { return items_; }

  protected:
    KeyedList() = default;
    KeyedList(const KeyedList&) = default;
    KeyedList& operator=(const KeyedList&) = default;
    // Lists are emptied from the last element to the first, so that no removal moves another.
    ~KeyedList() { items_.clear(); }

    KeyedCollection<T> items_;
};

}  // namespace velmora
