#pragma once

#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/XMLBGLSection.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The section or subsection records of an XML-style BGL file.
class XMLBGLSectionList {
  public:
    using const_iterator = KeyedCollection<XMLBGLSection>::const_iterator;

    std::shared_ptr<XMLBGLSection> Add(std::shared_ptr<XMLBGLSection> sXMLBGLSection = nullptr,
                                       const std::string& sKey = "");
    std::shared_ptr<XMLBGLSection> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

  private:
    KeyedCollection<XMLBGLSection> items_;
};

}  // namespace velmora
