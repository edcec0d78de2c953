#pragma once

#include <velmora/Condition.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>

namespace velmora {

// How the tests of a condition list combine.
enum eMultiCondition : int32_t { mAND = 0, mOR = 1, mNOT = 2, mNOR = 3 };

// The conditions in front of a model's guarded call, with the stretch of commands they occupy.
class ConditionList : public KeyedList<Condition> {
  public:
    int32_t commandStart() const { return commandStart_; }
    void commandStart(int32_t value) { commandStart_ = value; }
    int32_t commandEnd() const { return commandEnd_; }
    void commandEnd(int32_t value) { commandEnd_ = value; }
    eMultiCondition multiCondition() const { return multiCondition_; }
    void multiCondition(eMultiCondition value) { multiCondition_ = value; }

  private:
    int32_t commandStart_ = 0;
    int32_t commandEnd_ = 0;
    eMultiCondition multiCondition_ = mAND;
};

}  // namespace velmora
