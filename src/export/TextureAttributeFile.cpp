#include <velmora/OpenFlightWriter.h>
#include <velmora/Windows1252.h>

#include "foundation/FileSystem.h"
#include "foundation/OutputFile.h"

#include <array>
#include <cstdint>

namespace velmora {

namespace {

constexpr std::size_t kAttributeWords = 402;
constexpr int32_t kKernelVersion = 1570;
constexpr int32_t kHighWordOf1000 = 0x408F4000;  // the double 1000.0 is 0x408F4000 00000000

// The attribute file is the same for every texture: 402 big-endian words, 1,608 bytes.
constexpr std::array<int32_t, kAttributeWords> attributeWords() {
    std::array<int32_t, kAttributeWords> w{};
    w[0] = 100;               // texels in u
    w[1] = 100;               // texels in v
    w[2] = 1000;              // real-world size in u
    w[3] = 1000;              // real-world size in v
    w[4] = 64;                // up vector x
    w[6] = 4;                 // file format type
    w[7] = 6;                 // minification filter
    w[8] = 1;                 // magnification filter
    w[10] = 3;                // repetition in u
    w[11] = 3;                // repetition in v
    w[26] = kHighWordOf1000;  // real-world size in u, double (offset 104)
    w[28] = kHighWordOf1000;  // real-world size in v, double (offset 112)
    w[30] = 100;              // code of origin of the imported texture
    w[31] = kKernelVersion;
    w[33] = 1;  // external format type
    w[61] = 2;  // offset 244
    w[62] = 2;
    w[80] = 0x803F;  // offset 320
    w[384] = -1;     // offset 1536
    w[385] = -1;
    w[386] = 1;
    w[389] = 128;  // offset 1556
    w[392] = 1;    // offset 1568
    w[393] = 1;
    w[398] = kKernelVersion;  // offset 1592
    return w;
}

constexpr auto kAttributeFile = attributeWords();

}  // namespace

void OpenFlightWriter::writeTextureAttribute(const std::string& file) {
    // A name with folder parts or ".." stays inside the database's folder.
    // Texture names are Windows-1252 in the model; the file system takes its names as UTF-8.
    const std::string attributePath =
        fs::joinInside(dbFolder_, fileNameFromModelText(file) + ".attr");
    if (fs::fileExists(attributePath)) fs::deleteFile(attributePath, false);
    OutputFile attribute(attributePath);
    for (const int32_t word : kAttributeFile)
        attribute.writer().int32BigEndian(word);
    attribute.close();
}

}  // namespace velmora
