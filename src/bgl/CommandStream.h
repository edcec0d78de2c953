#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>
#include <vector>

// What the decoder, the encoder and the jump arithmetic share about commands in a stream.
namespace velmora::detail {

// The dictionary row of an opcode held by a command: an opcode that doesn't fit 16 bits is
// error 6, one outside 0 to 260 error 9. A slot without a row gives the empty record.
const BGLCommandDictEntry& rowOfOpcode(int32_t opcode);

// Bytes that a row's parameters take behind the opcode word.
int32_t parameterBytes(const BGLCommandDictEntry& row);

// A parameter as a number of the given width: error 13 for an empty slot or a text that is no
// number, error 6 when the value doesn't fit; fractions round half to even.
int32_t parameterAsInt32(const BGLCommand& command, int index);
int16_t parameterAsInt16(const BGLCommand& command, int index);

// Byte position behind each command: ends[k] is the total size of commands 1 to k, ends[0]
// is 0. A command's size is its row's length (0 without a row).
std::vector<int64_t> commandEnds(const KeyedCollection<BGLCommand>& commands);

}  // namespace velmora::detail
