// JSON, written value by value, indented.
#ifndef ZEBINFO_JSON_WRITER_H
#define ZEBINFO_JSON_WRITER_H

#include <fmt/format.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace zebinfo {

class JsonWriter {
 public:
  // `body()` writes the members with key(), or the elements.
  template <class Body>
  void object(Body body) {
    open('{');
    body();
    close('}');
  }
  template <class Body>
  void array(Body body) {
    open('[');
    body();
    close(']');
  }

  // A member's key; its value is what is written next.
  JsonWriter& key(std::string_view name);

  void value(std::string_view text);
  void value(const std::optional<std::string>& text);  // nothing is null
  void null() { raw("null"); }
  void value(bool truth) { raw(truth ? "true" : "false"); }
  template <std::integral Number>
  requires(!std::same_as<Number, bool>) void value(Number number) { raw(fmt::to_string(number)); }

  [[nodiscard]] const std::string& text() const noexcept { return out_; }

 private:
  void open(char bracket);
  void close(char bracket);
  void raw(std::string_view text);
  void beginItem();
  void newLine();

  std::string out_;
  std::size_t depth_ = 0;
  bool afterItem_ = false;  // a comma is due before the next one
  bool afterKey_ = false;   // the next value belongs to a key
};

}  // namespace zebinfo

#endif
