#include <velmora/XMLBGLSectionList.h>

namespace velmora {

std::shared_ptr<XMLBGLSection> XMLBGLSectionList::Add(std::shared_ptr<XMLBGLSection> sXMLBGLSection,
                                                      const std::string& sKey) {
    return items_.Add(std::move(sXMLBGLSection), sKey, IndexKey());
}

std::shared_ptr<XMLBGLSection> XMLBGLSectionList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t XMLBGLSectionList::Count() const {
    return items_.Count();
}

void XMLBGLSectionList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

XMLBGLSectionList::const_iterator XMLBGLSectionList::begin() const {
    return items_.begin();
}

XMLBGLSectionList::const_iterator XMLBGLSectionList::end() const {
    return items_.end();
}

}  // namespace velmora
