#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

class TextureList;
class BGLCommandList;
class OutputFile;

// Writes a model's textures and command stream as a BGLC-style listing, for reading and
// debugging. Lines end in CR LF.
class ASMWriter {
  public:
    ASMWriter();
    ~ASMWriter();
    ASMWriter(const ASMWriter&) = delete;
    ASMWriter& operator=(const ASMWriter&) = delete;

    void createASM(const std::string& file);
    void writeTextureList(const std::shared_ptr<TextureList>& tList);
    void writeBGLCommandList(const std::shared_ptr<BGLCommandList>& bglcList);
    void closeASM();

  private:
    std::unique_ptr<OutputFile> file_;  // open from createASM to closeASM
};

}  // namespace velmora
