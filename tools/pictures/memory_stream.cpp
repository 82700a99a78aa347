#include "tools/pictures/memory_stream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace stairmelt {

HRESULT MemoryStream::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) return E_POINTER;
    const bool known = id == IID_IUnknown || id == IID_ISequentialStream || id == IID_IStream;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG MemoryStream::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&references_)); }

ULONG MemoryStream::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT MemoryStream::Read(void* to, ULONG size, ULONG* done) {
    const size_t there = position_ < bytes_.size() ? bytes_.size() - position_ : 0;
    const ULONG given = static_cast<ULONG>(std::min<size_t>(size, there));
    if (given > 0) std::memcpy(to, &bytes_[position_], given);
    position_ += given;
    if (done != nullptr) *done = given;
    return given == size ? S_OK : S_FALSE;
}

HRESULT MemoryStream::Write(const void* from, ULONG size, ULONG* done) {
    if (done != nullptr) *done = 0;
    if (size == 0) return S_OK;
    try {
        // Growing by resize alone would copy everything at each write; reserving doubles.
        const size_t end = position_ + size;
        if (end > bytes_.capacity()) bytes_.reserve(std::max(end, bytes_.capacity() * 2));
        if (end > bytes_.size()) bytes_.resize(end);
    } catch (const std::bad_alloc&) {
        return STG_E_MEDIUMFULL;
    }
    std::memcpy(&bytes_[position_], from, size);
    position_ += size;
    if (done != nullptr) *done = size;
    return S_OK;
}

HRESULT MemoryStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
    const LONGLONG base = origin == STREAM_SEEK_CUR   ? static_cast<LONGLONG>(position_)
                          : origin == STREAM_SEEK_END ? static_cast<LONGLONG>(bytes_.size())
                                                      : 0;
    if (base + move.QuadPart < 0) return STG_E_INVALIDFUNCTION;
    position_ = static_cast<size_t>(base + move.QuadPart);
    if (position != nullptr) position->QuadPart = position_;
    return S_OK;
}

HRESULT MemoryStream::SetSize(ULARGE_INTEGER size) {
    try {
        bytes_.resize(static_cast<size_t>(size.QuadPart));
    } catch (const std::exception&) {
        return STG_E_MEDIUMFULL;
    }
    return S_OK;
}

HRESULT MemoryStream::Stat(STATSTG* stat, DWORD) {
    if (stat == nullptr) return STG_E_INVALIDPOINTER;
    *stat = {};
    stat->type = STGTY_STREAM;
    stat->cbSize.QuadPart = bytes_.size();
    return S_OK;
}

}  // namespace stairmelt
