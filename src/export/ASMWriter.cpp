#include <velmora/ASMWriter.h>
#include <velmora/BGLCommandList.h>
#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/TextureList.h>
#include <velmora/Version.h>

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"

#include <string>

namespace velmora {

namespace {

// The index of a texture line starts at this column (1-based), as a print tab would place it.
constexpr std::size_t kIndexColumn = 32;

template <class List>
const List& required(const std::shared_ptr<List>& list) {
    if (!list) raisePlatformError(kObjectNotSet);
    return *list;
}

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

void writeLine(int16_t file, const std::string& line) {
    hex::writeString(file, line, 0);
    hex::writeString(file, "\r\n", 0);
}

}  // namespace

ASMWriter::ASMWriter() = default;

// A writer released with its listing still open (after an error, say) closes it.
ASMWriter::~ASMWriter() {
    if (!fileOpen_) return;
    try {
        hex::closeFile(asmFile_);
    } catch (const Error&) {
        // Released on the way out of an error: the close of the remains doesn't add to it.
    }
}

void ASMWriter::createASM(const std::string& file) {
    if (fileOpen_) closeASM();
    asmFile_ = hex::nextFreeFile();
    // The file is opened without truncation, so an old listing is removed first.
    if (fs::fileExists(file)) fs::deleteFile(file, false);
    hex::openBinaryFile(asmFile_, file);
    fileOpen_ = true;

    writeLine(asmFile_, "; #######################################################");
    writeLine(asmFile_, "; ");
    writeLine(asmFile_, "; This BGLC source file has been created with the");
    writeLine(asmFile_, "; Velmora DLL version " + std::to_string(versionMajor()) + "." +
                            std::to_string(versionMinor()) + "." +
                            std::to_string(versionRevision()));
    writeLine(asmFile_, "; ");
    writeLine(asmFile_, "; For the moment this source file can only be used for");
    writeLine(asmFile_, "; debugging purposes. It does not yet contain all the");
    writeLine(asmFile_, "; code to create a valid MDL file again.");
    writeLine(asmFile_, "; ");
    writeLine(asmFile_, "; #######################################################");
    writeLine(asmFile_, "");
}

void ASMWriter::writeTextureList(const std::shared_ptr<TextureList>& tList) {
    const auto& textures = required(tList).elements();
    writeLine(asmFile_, "; Start of texture list");
    int32_t index = 0;
    for (const auto& t : textures)
        writeLine(asmFile_, textureLine(t->bitmap(), index++));
    writeLine(asmFile_, "");
}

void ASMWriter::writeBGLCommandList(const std::shared_ptr<BGLCommandList>& bglcList) {
    const auto& commands = required(bglcList).commands();
    const BGLOpcodeDictionary dictionary;
    writeLine(asmFile_, "; Start of BGL command list");
    std::string line;
    for (const auto& command : commands) {
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(command->opcode());
        // An opcode outside the table fails as the dictionary's own lookup does.
        if (row == nullptr) dictionary.getEntry(numbers::narrow16(command->opcode()));
        line = row != nullptr ? row->name : std::string();
        for (int16_t i = 0; i < (row != nullptr ? row->numParam : 0); ++i) {
            line += ' ';
            line += command->param(i);
            line += " JD: ";
            line += numbers::formatInteger(command->jumpDest(i));
            line += ',';
        }
        writeLine(asmFile_, line);
    }
    writeLine(asmFile_, "");
}

void ASMWriter::closeASM() {
    if (asmFile_ == -1 || !fileOpen_) return;
    fileOpen_ = false;
    hex::closeFile(asmFile_);
}

}  // namespace velmora
