#include "json_writer.h"

#include "text.h"

namespace zebinfo {

JsonWriter& JsonWriter::key(std::string_view name) {
  beginItem();
  out_ += jsonQuoted(name) + ": ";
  afterKey_ = true;
  return *this;
}

void JsonWriter::value(std::string_view text) { raw(jsonQuoted(text)); }

void JsonWriter::value(const std::optional<std::string>& text) {
  raw(text ? jsonQuoted(*text) : "null");
}

void JsonWriter::open(char bracket) {
  beginItem();
  out_ += bracket;
  ++depth_;
  afterItem_ = false;
}

void JsonWriter::close(char bracket) {
  --depth_;
  if (afterItem_) newLine();
  out_ += bracket;
  afterItem_ = true;
  if (depth_ == 0) out_ += '\n';
}

void JsonWriter::raw(std::string_view text) {
  beginItem();
  out_ += text;
  afterItem_ = true;
}

void JsonWriter::beginItem() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (afterItem_) out_ += ',';
  if (depth_ > 0) newLine();
}

void JsonWriter::newLine() {
  out_ += '\n';
  out_.append(depth_ * 2, ' ');
}

}  // namespace zebinfo
