// The bytes of a file of text, or of a text held in memory, as a reader of text wants them:
// unpacked (gzip, Zstandard, bzip2, xz, LZ4, by what the file holds and not by its name), and in
// UTF-8.
//
// They can be read again and again. A file is watched: once it is another one, Open() says so.
#pragma once

#include <arrow/io/type_fwd.h>

#include <memory>
#include <string>

#include "host/arrow/FileStamp.h"
#include "host/data/ReadingOptions.h"

namespace MCHost {

class TextBytes {
 public:
  // `name` is what messages call the file, its path where there is none.
  explicit TextBytes(std::string path, std::string name = "");
  // A text held in memory.
  static TextBytes Of(std::string name, std::string text);

  const std::string& Name() const { return fName; }
  // Whether its bytes are what stands in the file. REQUIRES: Open() or Start() has been called.
  bool IsPacked() const { return fbPacked; }

  // What the unpacked bytes are written in, UTF-8 unless set.
  void SetEncoding(TextEncoding encoding) { fEncoding = encoding; }
  TextEncoding Encoding() const { return fEncoding; }

  // From the first byte on; a mark of the byte order is among them. Throws HostIOError.
  std::shared_ptr<arrow::io::InputStream> Open() const;

  // The first bytes, unpacked, in the file's own encoding; fewer where there are no more.
  std::string Start(std::size_t size) const;

 private:
  std::shared_ptr<arrow::io::InputStream> Unpacked() const;

  std::string fName;
  std::string fPath;  // empty for a text in memory
  FileStamp fStamp;
  std::shared_ptr<const std::string> fpText;
  TextEncoding fEncoding = TextEncoding::kUtf8;
  mutable bool fbPacked = false;
};

}  // namespace MCHost
