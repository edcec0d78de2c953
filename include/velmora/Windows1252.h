#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Texts that come out of model files (texture names, the ISFT text, BGL_TAG
// names) are bytes in the Windows-1252 code page. This gives them as UTF-8; the five bytes the
// code page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) become the control characters of
// the same number, so no byte is lost.
std::string utf8FromWindows1252(std::string_view bytes);

// A name from a model (a texture's) as a name for the file system: as it is when it is valid
// UTF-8 already, otherwise taken as Windows-1252 and given as UTF-8.
std::string fileNameFromModelText(std::string_view bytes);

// True when every byte is below 128, so the bytes read the same in any of these encodings.
bool isPlainAscii(std::string_view bytes);

}  // namespace velmora
