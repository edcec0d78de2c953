#include <velmora/ASMWriter.h>
#include <velmora/MDLObject.h>

namespace velmora {

void MDLObject::exportASM(const std::string& f) {
    try {
        // The writer closes the listing when it goes, so a failure leaves no file open.
        ASMWriter writer;
        writer.createASM(f);
        writer.writeTextureList(textureList_);
        writer.writeBGLCommandList(commandList_);
        writer.closeASM();
    } catch (Error& error) {
        throw error.setFile(f);
    }
}

}  // namespace velmora
