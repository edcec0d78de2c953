#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/KeyedCollection.h>
#include <velmora/seasonalTextures.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

class ConditionList;

// The decoded BGL command stream: commands in stream order, 1-based. Jumps are held as list
// positions (`jumpDest`); byte offsets are worked out anew when the list is encoded.
class BGLCommandList : public KeyedList<BGLCommand, true> {
  public:
    // Decodes a "BGL " section and appends its commands, then resolves every jump.
    void readList(const std::string& data);
    // Works out every jump offset anew (updateJumpSize) and encodes the list.
    std::string asString();

    void processJumpDest();
    void processParent();
    void updateMaterial(int16_t position, bool Remove = false);
    void updateJumpDest(int16_t position, bool Remove = false);
    void updateJumpSize();

    // Model editing: the conditions in front of the guarded call, and seasonal texture runs.
    std::shared_ptr<ConditionList> getConditions(int32_t position) const;
    void addCondition(const std::shared_ptr<ConditionList>& cList);
    void addSeasonalTextures(const seasonalTextures& sList);

    // The commands for the library's own loops.
    const KeyedCollection<BGLCommand>& commands() const { return items_; }
    KeyedCollection<BGLCommand>& commands() { return items_; }

  private:
    int16_t findSeasonalBlock(int16_t texture, bool backwards, int32_t startAt) const;
};

}  // namespace velmora
