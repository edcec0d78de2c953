#include "scenery/TableBounds.h"

#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora::scenery {

bool tableFitsInFile(int64_t length, int64_t offset, int64_t count, int64_t recordSize) {
    if (count <= 0) return true;
    if (offset < 0) return false;
    // Compared by division so that a huge count can't overflow the product.
    return offset <= length && count <= (length - offset) / recordSize;
}

void raiseDamagedTable(const std::string& table) {
    raiseLibraryError(kSource, "The " + table + " is damaged");
}

std::string sectionName(int32_t position) {
    if (position <= 0) return "this section";
    return "section " + numbers::formatInteger(position);
}

}  // namespace velmora::scenery
