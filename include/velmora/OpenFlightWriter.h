#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

class VertexList;
class MaterialList;
class TextureList;
class OutputFile;
class ByteWriter;

// A record-level writer of OpenFlight databases, format revision 16.0, big-endian.
// The caller gives the order of the records and pairs each push with its pop.
class OpenFlightWriter {
  public:
    OpenFlightWriter();
    ~OpenFlightWriter();
    OpenFlightWriter(const OpenFlightWriter&) = delete;
    OpenFlightWriter& operator=(const OpenFlightWriter&) = delete;

    void createDB(const std::string& file);
    void closeDB();
    void writePushLevel();
    void writePopLevel();
    void writePushSubface();
    void writePopSubface();
    void writePushAttribute();
    void writePopAttribute();
    void writeHeader();
    void writeGroup(const std::string& name);
    void writeObject(const std::string& name);
    void writeFace(const std::string& name, int32_t Color, int16_t Texture, int16_t Material);
    void writeVertexList(int32_t v1, int32_t v2, int32_t v3);
    void writeLOD(const std::string& name, double switchIn, double switchOut);
    void writeVertexPalette(const std::shared_ptr<VertexList>& vList, float extraRotation);
    void writeVertex(double x, double y, double z, float nx, float ny, float nz, float tx,
                     float ty);
    void writeColorPalette(const std::shared_ptr<MaterialList>& mList);
    void writeMaterialPalette(const std::shared_ptr<MaterialList>& mList);
    void writeTexturePalette(const std::shared_ptr<TextureList>& tList,
                             const std::string& texFormat, bool saveATTR);
    void writeTextureAttribute(const std::string& file);
    void writeComment(const std::string& comment);
    void writeLongID(const std::string& name);

  private:
    // The database's writer; error 5 when no database is open.
    ByteWriter& db();

    std::unique_ptr<OutputFile> db_;  // open from createDB to closeDB
    std::string dbFolder_;
};

}  // namespace velmora
