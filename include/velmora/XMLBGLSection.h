#pragma once

#include <cstdint>
#include <memory>

namespace velmora {

class XMLBGLSectionList;
class ModelList;
class BGLObject;
class ByteReader;
namespace detail {
struct ScanBudget;
}

// The kinds of section of an XML-style BGL file; only mdl is acted on.
enum XMLBGLSectionType : int32_t {
    airport = 3,
    VORILS = 19,
    NDB = 23,
    Markers = 24,
    Boundary = 32,
    Waypoint = 34,
    GeoPol = 35,
    SceneryObject = 37,
    NameList = 39,
    mdl = 43,
    AdditionalAirport = 44,
    Exclusion = 46,
};

// A section record of an XML-style BGL file, or one of its subsection records.
class XMLBGLSection {
  public:
    XMLBGLSection();
    ~XMLBGLSection();

    XMLBGLSectionType sectionType() const { return sectionType_; }
    void sectionType(XMLBGLSectionType value) { sectionType_ = value; }
    int32_t numSubSection() const { return numSubSection_; }
    void numSubSection(int32_t value) { numSubSection_ = value; }
    int32_t offset() const { return offset_; }
    void offset(int32_t value) { offset_ = value; }
    int32_t headerSize() const { return headerSize_; }
    void headerSize(int32_t value) { headerSize_ = value; }

    // The file-number members read through the same readers as a scan does.
    void readFromFile(int16_t file);
    void readSubSections(int16_t file);
    void fillModelList(const std::shared_ptr<ModelList>& m, int16_t file);

    std::shared_ptr<XMLBGLSectionList> subSections() const { return subSections_; }

  private:
    friend class BGLObject;
    void readRecord(ByteReader& in);
    void readSubSections(ByteReader& in);
    // Fills the list within what the earlier sections of the same file have left of `budget`.
    void fillModelList(ModelList& m, ByteReader& in, detail::ScanBudget& budget);

    XMLBGLSectionType sectionType_ = static_cast<XMLBGLSectionType>(0);
    int32_t numSubSection_ = 0;
    int32_t offset_ = 0;
    int32_t headerSize_ = 0;
    std::shared_ptr<XMLBGLSectionList> subSections_;
    // 1-based place of the record in its list, named when one of its tables is damaged; 0 unknown.
    int32_t position_ = 0;
};

}  // namespace velmora
