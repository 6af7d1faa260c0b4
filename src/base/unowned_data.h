// Client data on its way to an object that will own it.
//
// A maker that takes client data together with the procedure that deletes it consumes the data in
// every case: unless it is handed over, it ends with this object.
#ifndef ZEB_BASE_UNOWNED_DATA_H
#define ZEB_BASE_UNOWNED_DATA_H

namespace zeb {

class UnownedData {
 public:
  using Delete = void (*)(void* data);

  UnownedData(Delete deleteProc, void* data) noexcept : deleteProc_(deleteProc), data_(data) {}
  UnownedData(const UnownedData&) = delete;
  UnownedData& operator=(const UnownedData&) = delete;
  ~UnownedData() {
    if (deleteProc_ == nullptr) return;
    try {
      deleteProc_(data_);
    } catch (...) {  // the data is the client's loss
    }
  }

  void handOver() noexcept { deleteProc_ = nullptr; }

 private:
  Delete deleteProc_;
  void* const data_;
};

}  // namespace zeb

#endif
