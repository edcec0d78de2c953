#pragma once

#include "foundation/ByteWriter.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace velmora {

// A file written through a ByteWriter: created empty on open, its bytes handed to the disk in
// large chunks. close() reports every failure; a file released without close() (an error on its
// way out) is closed quietly and keeps what was written up to then.
class OutputFile final : private ByteSink {
  public:
    // Error 76 when the folder is missing, 70 without permission, naming the path.
    explicit OutputFile(std::string path);
    ~OutputFile() override;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    ByteWriter& writer() { return writer_; }
    const std::string& path() const { return path_; }
    void close();

  private:
    void write(std::string_view bytes) override;

    std::string path_;
    std::FILE* file_ = nullptr;
    ByteWriter writer_{static_cast<ByteSink&>(*this)};
};

}  // namespace velmora
