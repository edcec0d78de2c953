#include <velmora/MDLObject.h>
#include <velmora/OpenFlightWriter.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

using detail::CommandSlots;

// Every triangle of the stream becomes one face with a vertex list of its own. Jumps and tests
// are not followed: the stream is walked flat from first to last.
class TriangleWalk {
  public:
    TriangleWalk(OpenFlightWriter& writer, const velmora::MaterialList& materials)
        : writer_(writer), materials_(materials) {}

    void visit(const BGLCommand& command) {
        switch (command.opcode()) {
            case SET_MATERIAL:
                currentMaterial_ = numbers::toInt16(CommandSlots::number(command, 0));
                currentTexture_ = numbers::toInt16(CommandSlots::number(command, 1));
                break;
            case DRAW_TRI_LIST_BEGIN:
                vertexBase_ = numbers::toInt32(CommandSlots::number(command, 0));
                break;
            case DRAW_TRI_LIST_ITEM:
                writeTriangle(command);
                break;
            default:
                break;
        }
    }

  private:
    void writeTriangle(const BGLCommand& command) {
        faceCount_ = numbers::narrow16(int32_t{faceCount_} + 1);
        std::string name(1, 'p');
        name += numbers::formatInteger(faceCount_);
        if (currentTexture_ == -1) {
            writer_.writeFace(name, currentMaterial_, -1, currentMaterial_);
        } else {
            // Textured faces take the white material after the model's own, so the texture
            // is not tinted; their colour still names the current material's diffuse colour.
            writer_.writeFace(name, currentMaterial_, currentTexture_,
                              numbers::narrow16(materials_.Count()));
        }
        writer_.writePushLevel();
        // Item indices are zero-based, relative to the list's first vertex.
        writer_.writeVertexList(paletteIndex(command, 0), paletteIndex(command, 1),
                                paletteIndex(command, 2));
        writer_.writePopLevel();
    }

    int32_t paletteIndex(const BGLCommand& command, int slot) const {
        return numbers::toInt32(CommandSlots::number(command, slot) + vertexBase_);
    }

    OpenFlightWriter& writer_;
    const velmora::MaterialList& materials_;
    int32_t vertexBase_ = 0;
    int16_t currentMaterial_ = 0;
    int16_t currentTexture_ = 0;  // a triangle before any material counts as textured
    int16_t faceCount_ = 0;
};

}  // namespace

void MDLObject::exportFLT(const std::string& f, const std::string& texFormat, bool saveATTR,
                          float extraRotation) {
    try {
        writeOpenFlight(f, texFormat, saveATTR, extraRotation);
    } catch (Error& error) {
        throw error.setFile(f);
    }
}

void MDLObject::writeOpenFlight(const std::string& f, const std::string& texFormat, bool saveATTR,
                                float extraRotation) {
    // The writer closes the database when it goes, so a failure leaves no file open behind it.
    OpenFlightWriter writer;
    writer.createDB(f);
    writer.writeHeader();
    writer.writeColorPalette(materialList_);
    writer.writeMaterialPalette(materialList_);
    writer.writeTexturePalette(textureList_, texFormat, saveATTR);
    writer.writeVertexPalette(vertexList_, extraRotation);

    writer.writePushLevel();
    writer.writeGroup("g1");
    writer.writePushLevel();
    writer.writeGroup("g2");
    writer.writePushLevel();
    writer.writeLOD("lod", 5000.0, 0.0);
    writer.writePushLevel();
    writer.writeObject("o1");
    writer.writePushLevel();

    if (!commandList_) raisePlatformError(kObjectNotSet);
    TriangleWalk walk(writer, *materialList_);
    int32_t position = 0;
    try {
        for (const auto& command : commandList_->commands()) {
            ++position;
            walk.visit(*command);
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }

    for (int level = 0; level < 5; ++level)
        writer.writePopLevel();
    writer.closeDB();
}

}  // namespace velmora
