#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/BoundingBox.h>
#include <velmora/GLTFExport.h>
#include <velmora/MDLHeader.h>
#include <velmora/MaterialList.h>
#include <velmora/Scenario.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>
#include <velmora/View.h>
#include <velmora/seasonalTextures.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

class OpenGLPreviewObject;
class DrawListSink;
class GeometrySink;

// How far a load (or the preparation of the preview) has got.
enum LoadingStatus : int32_t {
    loadingHEAD = 0,
    loadingMATE = 1,
    loadingTEXT = 2,
    loadingVERT = 3,
    loadingBGL = 4,
    generatingDrawList = 5,
};

// One section of the model file. Size 0 means absent: the section is not saved.
struct RIFFSection {
    std::string tag;
    int32_t size = 0;
    std::string data;
    int16_t parent = 0;
};

// A scenery MDL model: the RIFF file of form "MDL9", split into its 19 known sections, with
// the header, bounding box, materials, textures, vertices and command stream decoded.
class MDLObject {
  public:
    MDLObject();
    MDLObject(const MDLObject&) = delete;
    MDLObject& operator=(const MDLObject&) = delete;

    // True once the preview is ready (glPreparepreview); a load alone leaves it false.
    bool Loaded() const { return loaded_; }
    velmora::LoadingStatus LoadingStatus() const { return loadingStatus_; }
    // The decoded objects; none (nullptr) before the first load.
    std::shared_ptr<velmora::TextureList> TextureList() const { return textureList_; }
    std::shared_ptr<velmora::MaterialList> MaterialList() const { return materialList_; }
    std::shared_ptr<velmora::VertexList> VertexList() const { return vertexList_; }
    std::shared_ptr<velmora::BGLCommandList> BGLCommandList() const { return commandList_; }
    std::shared_ptr<velmora::BoundingBox> BoundingBox() const { return boundingBox_; }
    std::shared_ptr<velmora::MDLHeader> MDLHeader() const { return header_; }

    std::string getISFT() const;
    // The ISFT text up to its terminating zero (the whole section when it holds none), in the
    // file's Windows-1252 bytes.
    std::string isftText() const;
    void setISFT(const std::string& data);
    // Index of a tag (exact, case-sensitive), or -1.
    int16_t getRIFFSectionIndex(const std::string& t) const;
    // Size of section 0 to 19; anything else is error 9.
    int32_t getRIFFSectionSize(int16_t i) const;
    int16_t getNumRIFFSections() const { return 19; }
    // The tag and the payload of section 0 to 19; anything else is error 9.
    std::string getRIFFSectionTag(int16_t i) const;
    std::string getRIFFSectionData(int16_t i) const;

    // Loads a model file. A missing or unreadable file fails like one that isn't a model.
    void readMDL(const std::string& file);
    // Loads a model from the bytes of a whole model file, as readMDL does from a file;
    // `path` is what MDLPath is set to.
    void readMDLBytes(std::string_view bytes, const std::string& path = "");

    // Preview (needs a current OpenGL context, see OpenGLPreviewObject).
    void glPreparepreview(const std::shared_ptr<OpenGLPreviewObject>& oglPreview);
    void glLoadTextureList(const std::shared_ptr<OpenGLPreviewObject>& oglPObj);
    void glGenerateDrawList();
    // The same list, emitted to any sink (a recorder, say) instead of OpenGL.
    void glGenerateDrawList(DrawListSink& sink);
    // The list of what the walk under `scenario` comes to (see walk).
    void glGenerateDrawList(DrawListSink& sink, const Scenario& scenario);
    void glDrawMDL(float heading, float pitch, float panX, float panY, float picWidth,
                   float picHeigth, int32_t hDC, float zoom);

    // Loads every texture that has a file keeping its alpha (glPointer gets the names), for
    // glDrawView.
    void glPrepareView(const std::shared_ptr<OpenGLPreviewObject>& oglPreview);
    // Draws a frame into surface `hDC` as `view` describes it: the scenario walk under `scenario`
    // (or, without one, the flat walk that draws every part), framed to fit what is drawn, each
    // light a point of its colour, and swaps it to the surface. When the scenario's time of day
    // (variable 652) says night, the sky is dark and the model lit by the moon, so that its own
    // light and its lights show. Needs a current context (initOpenGL).
    ViewResult glDrawView(const View& view, int32_t hDC,
                          const std::optional<Scenario>& scenario = Scenario()) const;

    // Walks the command stream and tells `sink` what the model is made of, in its own axes:
    // each command come to, the surface of each SET_MATERIAL, depth biases, triangles, lines and
    // lights. Without a scenario, every command in file order: jumps are not followed and tests
    // not evaluated, so every part is emitted. With one, the stream as the simulator follows it:
    // calls, returns, jumps and transforms taken, tests evaluated against the scenario, and only
    // what lies on the way emitted; a stream that loops is error 100. A material, texture or
    // vertex key outside its list is error 9, before anything of its command is emitted; every
    // error names the command. The model is not changed.
    void walk(GeometrySink& sink, const std::optional<Scenario>& scenario = std::nullopt) const;

    // Saving.
    void saveMDL(const std::string& file);
    void updateData();
    void updateSectionSize();
    void cleanDICT();

    // Editing.
    void removeKillShadow();
    void addKillShadow();
    void fixLights();
    seasonalTextures readSeasonalDates(int16_t parent) const;
    void updateTextureSize();
    void recalcTextureSizes();

    // Export.
    void exportASM(const std::string& f);
    void exportFLT(const std::string& f, const std::string& texFormat, bool saveATTR = true,
                   float extraRotation = 0);
    // Writes the model as glTF 2.0: `f` ending in .glb for one binary file, in .gltf for JSON
    // with a .bin and PNG images beside it. Images are found in `options.textureFolder` by the
    // textures' names (as TextureList::findFiles finds them), or else at their `file`. Without a
    // scenario every part is written, each level of detail as a node of its own, and the
    // textures of a seasonal run as KHR_materials_variants named after the seasons, the
    // primitive's own material being the one of day 172; with one, what the scenario walk draws.
    // Materials are single-sided unless `options.doubleSided`. Every file is written beside its
    // target and moved into place when whole.
    GLTFExport exportGLTF(const std::string& f, const GLTFOptions& options) const;
    // The same, single-sided.
    GLTFExport exportGLTF(const std::string& f, const std::string& textureFolder = "",
                          const std::optional<Scenario>& scenario = std::nullopt) const;

    void MDLPath(const std::string& value) { mdlPath_ = value; }
    // The path of the last load (or the one a host gave).
    const std::string& path() const { return mdlPath_; }
    // The 16 bytes a compiled scenery file's model table gives the model (its GUID) when a scan
    // found it there; empty otherwise.
    const std::string& sceneryGuid() const { return sceneryGuid_; }
    void sceneryGuid(const std::string& bytes) { sceneryGuid_ = bytes; }

    // Section table access for the library's own members.
    RIFFSection& section(int index) { return sectionTable_[static_cast<std::size_t>(index)]; }
    const RIFFSection& section(int index) const {
        return sectionTable_[static_cast<std::size_t>(index)];
    }
    int16_t drawListId() const { return drawListId_; }

  private:
    void requireLoaded() const;
    void writeModelFile(const std::string& file);
    void writeOpenFlight(const std::string& f, const std::string& texFormat, bool saveATTR,
                         float extraRotation);

    std::array<RIFFSection, 20> sectionTable_;
    std::shared_ptr<velmora::MaterialList> materialList_;
    std::shared_ptr<velmora::TextureList> textureList_;
    std::shared_ptr<velmora::VertexList> vertexList_;
    std::shared_ptr<velmora::BGLCommandList> commandList_;
    std::shared_ptr<velmora::BoundingBox> boundingBox_;
    std::shared_ptr<velmora::MDLHeader> header_;
    bool loaded_ = false;
    int16_t drawListId_ = 0;
    std::string mdlPath_;
    std::string sceneryGuid_;
    velmora::LoadingStatus loadingStatus_ = loadingHEAD;
};

}  // namespace velmora
