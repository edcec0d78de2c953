#include <velmora/BGLCommandList.h>

#include <utility>

namespace velmora {

BGLCommandList::BGLCommandList() = default;

BGLCommandList::~BGLCommandList() = default;

std::shared_ptr<BGLCommand> BGLCommandList::Add(std::shared_ptr<BGLCommand> sBGLCommand,
                                                const std::string& sKey, IndexKey bfrIndexKey) {
    return commands_.Add(std::move(sBGLCommand), sKey, bfrIndexKey);
}

std::shared_ptr<BGLCommand> BGLCommandList::Item(IndexKey vntIndexKey) const {
    return commands_.Item(vntIndexKey);
}

int32_t BGLCommandList::Count() const {
    return commands_.Count();
}

void BGLCommandList::Remove(IndexKey vntIndexKey) {
    commands_.Remove(vntIndexKey);
}

BGLCommandList::const_iterator BGLCommandList::begin() const {
    return commands_.begin();
}

BGLCommandList::const_iterator BGLCommandList::end() const {
    return commands_.end();
}

}  // namespace velmora
