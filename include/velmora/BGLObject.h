#pragma once

#include <velmora/ModelList.h>
#include <velmora/XMLBGLSectionList.h>

#include <memory>
#include <string>

namespace velmora {

class ByteReader;

// Finds the models of an XML-style compiled BGL file and loads each as an MDLObject.
class BGLObject {
  public:
    BGLObject();
    ~BGLObject();

    // True when the file exists and starts with the magic 513 (bytes 01 02).
    bool isXMLBGL(const std::string& f);
    // Walks the file's tables; the models of its last mdl section go to ModelList.
    // A missing file does nothing.
    void readXMLBGL(const std::string& f);
    std::shared_ptr<velmora::ModelList> ModelList() const { return modelList_; }

  private:
    // The sections from `firstOfThisFile` on share one budget of model bytes; earlier ones, read
    // from another file by an earlier scan, each have their own.
    void scan(ByteReader& in);
    void fillModels(ByteReader& in, int32_t firstOfThisFile);

    std::shared_ptr<velmora::ModelList> modelList_;
    std::shared_ptr<XMLBGLSectionList> sections_;
};

// The 16 bytes of a GUID as it is written, "{7C8A1E2B-0D4F-4E11-9A2B-00C04FD430C8}" (the first
// three fields little-endian); "" for anything but 16 bytes, and for 16 zeros (no GUID).
std::string guidText(const std::string& bytes);

}  // namespace velmora
