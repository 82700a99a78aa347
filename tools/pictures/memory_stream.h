// A stream over a growing vector. The system's own memory streams grow block by block or end at 2 GB, which is slow or
// too small for the larger pictures.
#pragma once

#include <windows.h>
// After windows.h, whose types it uses.
#include <objidl.h>

#include "tools/byte_order.h"

namespace stairmelt {

// Born with one reference; lives on the heap, as COM objects do.
class MemoryStream final : public IStream {
public:
    Bytes TakeBytes() { return std::move(bytes_); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE Read(void* to, ULONG size, ULONG* done) override;
    HRESULT STDMETHODCALLTYPE Write(const void* from, ULONG size, ULONG* done) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;

    // What no encoder needs.
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

private:
    ~MemoryStream() = default;

    Bytes bytes_;
    size_t position_ = 0;  // may lie beyond the end; a write there fills the gap with zeros
    LONG references_ = 1;
};

}  // namespace stairmelt
