// A shared object that stays loaded for as long as a C++ object lives.
#ifndef EXAMPLES_COMMON_HOST_SHARED_OBJECT_H
#define EXAMPLES_COMMON_HOST_SHARED_OBJECT_H

#include <filesystem>

namespace examples {

class SharedObject {
 public:
  // Loads a file. Its symbols stay its own: two modules may export the same names. With keepMapped
  // its code stays in memory when it is unloaded. Throws std::runtime_error with the loader's
  // reason.
  SharedObject(const std::filesystem::path& path, bool keepMapped);
  ~SharedObject();

  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;

  // The function of this name, or null if the object exports none.
  template <class Function>
  [[nodiscard]] Function find(const char* name) const {
    return reinterpret_cast<Function>(symbol(name));
  }

 private:
  [[nodiscard]] void* symbol(const char* name) const;

  void* handle_;
};

// Whether the file is in memory, whoever loaded it.
bool isMapped(const std::filesystem::path& path);

}  // namespace examples

#endif
