#pragma once

// Models that the benchmarks build with the library itself: a command stream of a chosen
// length with the constructs that cost something (long jumps, tests, conditions in front of
// the model's call, seasonal texture runs, lights behind tests), and whole model files
// around it.
#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>
#include <velmora/seasonalTextures.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace velmora::bench {

// A 32-bit little-endian value as four bytes.
std::string le32(int64_t value);

struct ModelShape {
    int commands = 60000;  // about; the stream stops at the first unit that reaches it
    int vertices = 65535;
    int materials = 1000;
    int textures = 1000;
    int lights = 1000;
    int jumpReach = 0;  // how far ahead the plain jumps lead at most; 0: anywhere up to the end
};

// The model of the issue: 65,535 vertices, 1,000 materials and textures, ~60,000 commands.
// Its command count is beyond what a save may write (16-bit counter), so it is only loaded.
ModelShape largeShape();
// The largest model a save may write: the same tables with ~30,000 commands.
ModelShape saveableShape();
// A few hundred commands.
ModelShape smallShape();
// A list of `commands` commands for the edits, whose positions are 16-bit: at most 32,767.
ModelShape editShape(int commands);

// The stream, built command by command through the public interface. It opens with three
// tests in front of the model's call (conditions), then its body: triangle lists, long
// 32-bit jumps, short tests, seasonal runs of the textures 0, 1 and 2 (the triangle lists use
// other textures) and `lights` lights each behind a mask test and a variable base override.
void buildStream(BGLCommandList& list, const ModelShape& shape, uint32_t seed = 42);
// The "BGL " section payload of that stream.
std::string streamBytes(const ModelShape& shape, uint32_t seed = 42);
// A whole model file: "MDLH", "BBOX" and, inside "EXTE", "TEXT", "MATE", "VERT" and "BGL ".
// The sections are assembled here, so the file may hold more commands than a save allows.
std::string modelFile(const ModelShape& shape, uint32_t seed = 42);

// The seasons the stream's runs are written for (summer, autumn, and winter over the new year).
seasonalTextures streamSeasons();

// Files of a benchmark run, in a folder of their own that goes with the process.
std::string benchFile(const std::string& name);
void writeFile(const std::string& path, const std::string& bytes);

// The floor: the file read into memory with plain stream calls, and the bytes written out to
// another file with them.
std::string floorRead(const std::string& path);
void floorWrite(const std::string& path, const std::string& bytes);

// Median seconds, over a few runs, of the floor's two halves and of the whole round trip.
struct FloorSeconds {
    double read = 0;
    double write = 0;
    double roundTrip = 0;
};
FloorSeconds measureFloor(const std::string& path);

// Adds the counter `name`: seconds per iteration over `floorSeconds` (needs UseRealTime).
void reportFloorRatio(benchmark::State& state, const char* name, double floorSeconds);

}  // namespace velmora::bench
