#include <velmora/ASMWriter.h>
#include <velmora/BGLCommandList.h>
#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/TextureList.h>
#include <velmora/Version.h>

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/NumberText.h"
#include "foundation/OutputFile.h"

#include <string>

namespace velmora {

namespace {

// The index of a texture line starts at this column (1-based), as a print tab would place it.
constexpr std::size_t kIndexColumn = 32;

// One texture line: the name, a print tab to column 32, then the index printed as a plain
// number is, with a blank where a plus sign would stand and a blank behind it. A name that
// already runs past column 31 gets one blank instead, so each texture keeps a line of its own.
std::string textureLine(const std::string& bitmap, int32_t index) {
    std::string line = bitmap;
    if (line.size() < kIndexColumn) {
        line.resize(kIndexColumn - 1, ' ');
    } else {
        line += ' ';
    }
    line += ' ';
    line += numbers::formatInteger(index);
    line += ' ';
    return line;
}

// The listing's writer; error 5 when no listing is open.
ByteWriter& listing(const std::unique_ptr<OutputFile>& file) {
    if (!file) raisePlatformError(kInvalidProcedureCall, "no listing is open (createASM first)");
    return file->writer();
}

void writeLine(ByteWriter& out, const std::string& line) {
    out.bytes(line);
    out.bytes("\r\n");
}

}  // namespace

ASMWriter::ASMWriter() = default;

// A writer released with its listing still open (after an error, say) closes it quietly.
ASMWriter::~ASMWriter() = default;

void ASMWriter::createASM(const std::string& file) {
    if (file_) closeASM();
    // An old listing is removed first, so a read-only one is refused (error 70).
    if (fs::fileExists(file)) fs::deleteFile(file, false);
    file_ = std::make_unique<OutputFile>(file);
    ByteWriter& out = file_->writer();

    writeLine(out, "; #######################################################");
    writeLine(out, "; ");
    writeLine(out, "; This BGLC source file has been created with the");
    writeLine(out, "; Velmora DLL version " + std::to_string(versionMajor()) + "." +
                       std::to_string(versionMinor()) + "." + std::to_string(versionRevision()));
    writeLine(out, "; ");
    writeLine(out, "; For the moment this source file can only be used for");
    writeLine(out, "; debugging purposes. It does not yet contain all the");
    writeLine(out, "; code to create a valid MDL file again.");
    writeLine(out, "; ");
    writeLine(out, "; #######################################################");
    writeLine(out, "");
}

void ASMWriter::writeTextureList(const std::shared_ptr<TextureList>& tList) {
    const auto& textures = required(tList).elements();
    ByteWriter& out = listing(file_);
    writeLine(out, "; Start of texture list");
    int32_t index = 0;
    for (const auto& t : textures)
        writeLine(out, textureLine(t->bitmap(), index++));
    writeLine(out, "");
}

void ASMWriter::writeBGLCommandList(const std::shared_ptr<BGLCommandList>& bglcList) {
    const auto& commands = required(bglcList).commands();
    ByteWriter& out = listing(file_);
    writeLine(out, "; Start of BGL command list");
    std::string line;
    int32_t position = 0;
    for (const auto& command : commands) {
        ++position;
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(command->opcode());
        // An opcode outside the table fails as the dictionary's own lookup does.
        if (row == nullptr) {
            throw platformError(command->opcode() > 32767 || command->opcode() < -32768
                                    ? kOverflow
                                    : kSubscriptOutOfRange)
                .setCommand(position)
                .setDetail("opcode " + numbers::formatInteger(command->opcode()) +
                           " lies outside the opcode table (0 to 260)");
        }
        line = row->name;
        for (int16_t i = 0; i < row->numParam; ++i) {
            line += ' ';
            line += command->param(i);
            line += " JD: ";
            line += numbers::formatInteger(command->jumpDest(i));
            line += ',';
        }
        writeLine(out, line);
    }
    writeLine(out, "");
}

void ASMWriter::closeASM() {
    if (!file_) return;
    const std::unique_ptr<OutputFile> file = std::move(file_);
    file->close();
}

}  // namespace velmora
