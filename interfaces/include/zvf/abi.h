// Binary interface shared by the module and its hosts. Every method is a
// slot in a COM-style table: no data members, no virtual destructors, fixed
// width integers, UTF-16 text. Nothing may throw across these methods.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(_WIN32) && !defined(_WIN64)
#define ZVF_CALL __stdcall
#else
#define ZVF_CALL
#endif

namespace zvf {

struct Guid {
    uint32_t d1;
    uint16_t d2;
    uint16_t d3;
    uint8_t d4[8];
};
static_assert(sizeof(Guid) == 16);

inline bool operator==(const Guid& a, const Guid& b) { return std::memcmp(&a, &b, sizeof(Guid)) == 0; }

using Status = int32_t;

namespace status {
constexpr Status ok = 0;
constexpr Status not_implemented = static_cast<Status>(0x80004001u);
constexpr Status no_interface = static_cast<Status>(0x80004002u);
constexpr Status pointer = static_cast<Status>(0x80004003u);
constexpr Status fail = static_cast<Status>(0x80004005u);
constexpr Status invalid_arg = static_cast<Status>(0x80070057u);
constexpr Status out_of_memory = static_cast<Status>(0x8007000Eu);
}  // namespace status

struct FrameSize {
    int32_t width;
    int32_t height;
};
static_assert(sizeof(FrameSize) == 8);

struct Rect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};
static_assert(sizeof(Rect) == 16);

struct FrameFormat {
    int32_t width;
    int32_t height;
    int32_t bitsPerPixel;
    uint32_t flags;  // bit 0: top field first
};
static_assert(sizeof(FrameFormat) == 16);

// Interfaces never own a destructor slot; the protected destructor keeps
// callers from deleting through them.
struct IUnknown {
    virtual Status ZVF_CALL QueryInterface(const Guid* iid, void** out) = 0;
    virtual uint32_t ZVF_CALL AddRef() = 0;
    virtual uint32_t ZVF_CALL Release() = 0;

protected:
    ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
    virtual Status ZVF_CALL CreateInstance(IUnknown* outer, const Guid* iid, void** out) = 0;
    virtual Status ZVF_CALL LockServer(int32_t lock) = 0;

protected:
    ~IClassFactory() = default;
};

struct IParameterBlob : IUnknown {
    virtual void* ZVF_CALL Allocate(uint32_t bytes) = 0;
    virtual Status ZVF_CALL Reserved4() = 0;
    virtual uint32_t ZVF_CALL GetDataSize() = 0;
    virtual void* ZVF_CALL GetData() = 0;

protected:
    ~IParameterBlob() = default;
};

struct ICoreObject : IUnknown {
    virtual Status ZVF_CALL Reserved3() = 0;
    virtual Status ZVF_CALL Reserved4() = 0;
    virtual Status ZVF_CALL Reserved5() = 0;
    virtual Status ZVF_CALL Reserved6() = 0;
    // kind 1 yields an IParameterBlob.
    virtual Status ZVF_CALL CreateObject(uint32_t kind, void** out) = 0;

protected:
    ~ICoreObject() = default;
};

struct IVideoFrame : IUnknown {
    // request 12: a new frame of the same size and format.
    virtual Status ZVF_CALL CreateCompatible(uint32_t request, IVideoFrame** out) = 0;
    virtual int32_t ZVF_CALL GetBitsPerPixel() = 0;
    virtual Status ZVF_CALL GetSize(FrameSize* out) = 0;
    virtual Status ZVF_CALL Reserved6() = 0;
    virtual Status ZVF_CALL Reserved7() = 0;
    virtual Status ZVF_CALL Reserved8() = 0;
    virtual Status ZVF_CALL Reserved9() = 0;
    virtual Status ZVF_CALL Reserved10() = 0;
    virtual uint32_t ZVF_CALL GetFrameProperty() = 0;  // bit 0: top field first
    virtual Status ZVF_CALL Reserved12() = 0;
    virtual Status ZVF_CALL Reserved13() = 0;
    virtual Status ZVF_CALL Reserved14() = 0;
    virtual Status ZVF_CALL Reserved15() = 0;
    virtual Status ZVF_CALL Reserved16() = 0;
    virtual Status ZVF_CALL Reserved17() = 0;
    virtual Status ZVF_CALL Reserved18() = 0;
    virtual uint8_t* ZVF_CALL GetBuffer() = 0;

protected:
    ~IVideoFrame() = default;
};

struct IFilterInstance;

struct IVideoFilter : IUnknown {
    virtual uint32_t ZVF_CALL GetKind() = 0;
    virtual const char16_t* ZVF_CALL GetIdentifier() = 0;
    virtual const char16_t* ZVF_CALL GetName() = 0;
    virtual const char16_t* ZVF_CALL GetCategory() = 0;
    virtual const char16_t* ZVF_CALL GetDescription() = 0;
    virtual const char16_t* ZVF_CALL GetVendor() = 0;
    virtual uint32_t ZVF_CALL GetVersion() = 0;
    virtual Status ZVF_CALL Reserved10(uint32_t) = 0;
    virtual Status ZVF_CALL CreateInstance(IParameterBlob* source, uint32_t context, IFilterInstance** out) = 0;
    // Destroy slot: frees the object when bit 0 of flags is set.
    virtual void* ZVF_CALL Destroy(uint32_t flags) = 0;

protected:
    ~IVideoFilter() = default;
};

struct IFilterInstance : IUnknown {
    virtual Status ZVF_CALL OpenSetup(void* parentWindow) = 0;
    virtual Status ZVF_CALL ShowSetup(int32_t show) = 0;
    virtual Status ZVF_CALL CloseSetup() = 0;
    virtual Status ZVF_CALL RefreshSetup() = 0;
    virtual Status ZVF_CALL SaveParameters(IParameterBlob** out) = 0;
    virtual uint32_t ZVF_CALL GetCapabilities() = 0;
    virtual int32_t ZVF_CALL IsSetupIdle() = 0;
    virtual Status ZVF_CALL PrepareRender() = 0;
    // frame and passThrough are handed through by the host unchanged; field 1
    // selects the odd rows, anything else the even rows.
    virtual Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t frame,
                                   uint32_t passThrough, int32_t field, uint32_t refresh) = 0;
    virtual Status ZVF_CALL EndRender() = 0;

protected:
    ~IFilterInstance() = default;
};

struct IHost : IUnknown {
    virtual Status ZVF_CALL CreateObject(uint32_t a, uint32_t b, const Guid* iid, void** out) = 0;

protected:
    ~IHost() = default;
};

struct IFilterRegistry : IUnknown {
    // A negative result means the filter was refused.
    virtual Status ZVF_CALL RegisterFilter(IVideoFilter* filter) = 0;

protected:
    ~IFilterRegistry() = default;
};

struct ISharedHostObject : IUnknown {
    // A setup dialog calls this with its instance's context value so the
    // host redraws its preview.
    virtual Status ZVF_CALL ParametersChanged(uint32_t context) = 0;

protected:
    ~ISharedHostObject() = default;
};

struct IFieldSync : IUnknown {
    virtual Status ZVF_CALL Synchronize(int32_t field) = 0;

protected:
    ~IFieldSync() = default;
};

struct IFrameCopy : IUnknown {
    virtual Status ZVF_CALL CopyFieldRect(IVideoFrame* dst, const Rect* dstRect, IVideoFrame* src, const Rect* srcRect,
                                          int32_t field) = 0;

protected:
    ~IFrameCopy() = default;
};

struct IProjectFormat : IUnknown {
    virtual Status ZVF_CALL GetFrameFormat(FrameFormat* out) = 0;

protected:
    ~IProjectFormat() = default;
};

namespace cpu {
constexpr uint32_t mmx = 1u << 0, sse = 1u << 1, sse2 = 1u << 2, ssse3 = 1u << 3, sse41 = 1u << 4, avx2 = 1u << 5;
// AVX-512 F, BW, VBMI and VNNI, with the system saving their registers.
constexpr uint32_t avx512 = 1u << 6;
}

struct IProcessorFeatures : IUnknown {
    virtual uint32_t ZVF_CALL GetFeatures() = 0;

protected:
    ~IProcessorFeatures() = default;
};

// Exports of the module and of the core library.
extern "C" {
using StartupFn = int32_t (*)(IHost*);
using ShutdownFn = int32_t (*)();
using DllGetClassObjectFn = Status(ZVF_CALL*)(const Guid* clsid, const Guid* iid, void** out);
using DllCanUnloadNowFn = Status(ZVF_CALL*)();
}

}  // namespace zvf
