#include <velmora/ASMWriter.h>
#include <velmora/MDLObject.h>

namespace velmora {

void MDLObject::exportASM(const std::string& f) {
    // The writer closes the listing when it goes, so a failure leaves no file open behind it.
    ASMWriter writer;
    writer.createASM(f);
    writer.writeTextureList(textureList_);
    writer.writeBGLCommandList(commandList_);
    writer.closeASM();
}

}  // namespace velmora
