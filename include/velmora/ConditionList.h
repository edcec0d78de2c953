#pragma once

#include <velmora/Condition.h>
#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// How the tests of a condition list combine.
enum eMultiCondition : int32_t { mAND = 0, mOR = 1, mNOT = 2, mNOR = 3 };

// The conditions in front of a model's guarded call, with the stretch of commands they occupy.
class ConditionList {
  public:
    using const_iterator = KeyedCollection<Condition>::const_iterator;

    std::shared_ptr<Condition> Add(std::shared_ptr<Condition> sCondition = nullptr,
                                   const std::string& sKey = "");
    std::shared_ptr<Condition> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

    int32_t commandStart() const { return commandStart_; }
    void commandStart(int32_t value) { commandStart_ = value; }
    int32_t commandEnd() const { return commandEnd_; }
    void commandEnd(int32_t value) { commandEnd_ = value; }
    eMultiCondition multiCondition() const { return multiCondition_; }
    void multiCondition(eMultiCondition value) { multiCondition_ = value; }

  private:
    KeyedCollection<Condition> items_;
    int32_t commandStart_ = 0;
    int32_t commandEnd_ = 0;
    eMultiCondition multiCondition_ = mAND;
};

}  // namespace velmora
