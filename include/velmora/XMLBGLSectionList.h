#pragma once

#include <velmora/KeyedCollection.h>
#include <velmora/XMLBGLSection.h>

namespace velmora {

// The section or subsection records of an XML-style BGL file.
class XMLBGLSectionList : public KeyedList<XMLBGLSection> {};

}  // namespace velmora
