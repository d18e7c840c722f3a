// The object behind every filter: one C++ object with two interface tables,
// IVideoFilter (primary; the registered class object answers only this one)
// and IFilterInstance (secondary; instances only). The secondary's IUnknown
// slots are the primary's, so both tables share one reference count.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "zvf/abi.h"
#include "zvf/blob.h"
#include "zvf/record.h"
#include "zvf/setup_dialog.h"
#include "zvf/simd_level.h"
#include "core_loader.h"  // module/

namespace zvf {

// Family A loads each identity string lazily into its own cache; Family B
// fills a class-wide array when the first object is constructed and empties
// it with the last.
enum class Family : uint8_t { A, B };

struct Identity {
    Family family;
    std::u16string_view identifier;  // fixed text, not a resource
    uint32_t nameId;
    uint32_t categoryId;
    uint32_t descriptionId;
    uint32_t vendorId;
    uint32_t maintainerId;  // Family B only
    uint32_t creatorId;     // Family B only
    uint32_t capabilities;  // GetCapabilities constant
};

// Class-wide data: one per filter class, shared by all its objects.
struct ClassState {
    std::atomic<int32_t> live{0};
    std::mutex mutex;
    std::vector<std::u16string> strings;               // Family B, 7 entries while objects live
    std::unique_ptr<std::u16string> lazy[4];           // Family A: name, category, description, vendor
};

// Filter objects alive in this module, all classes together.
int32_t LiveFilterObjects();

class FilterBase : public IVideoFilter, public IFilterInstance {
public:
    FilterBase(const FilterBase&) = delete;
    FilterBase& operator=(const FilterBase&) = delete;

    // IUnknown, shared by both tables.
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override;
    uint32_t ZVF_CALL AddRef() override;
    uint32_t ZVF_CALL Release() override;

    // IVideoFilter
    uint32_t ZVF_CALL GetKind() override { return 1; }
    const char16_t* ZVF_CALL GetIdentifier() override;
    const char16_t* ZVF_CALL GetName() override { return Text(0); }
    const char16_t* ZVF_CALL GetCategory() override { return Text(1); }
    const char16_t* ZVF_CALL GetDescription() override { return Text(2); }
    const char16_t* ZVF_CALL GetVendor() override { return Text(3); }
    uint32_t ZVF_CALL GetVersion() override { return blob::kVersion; }
    Status ZVF_CALL Reserved10(uint32_t) override { return status::not_implemented; }
    Status ZVF_CALL CreateInstance(IParameterBlob* source, uint32_t context, IFilterInstance** out) override;
    void* ZVF_CALL Destroy(uint32_t flags) override;

    // IFilterInstance
    Status ZVF_CALL OpenSetup(void* parentWindow) override;
    Status ZVF_CALL ShowSetup(int32_t show) override;
    Status ZVF_CALL CloseSetup() override;
    Status ZVF_CALL RefreshSetup() override;
    Status ZVF_CALL SaveParameters(IParameterBlob** out) override;
    uint32_t ZVF_CALL GetCapabilities() override { return identity_.capabilities; }
    int32_t ZVF_CALL IsSetupIdle() override { return dialog_ ? dialog_->IdleState() : 0; }
    Status ZVF_CALL PrepareRender() override { return status::ok; }
    Status ZVF_CALL EndRender() override { return status::ok; }

    // For tests that drive the object directly.
    SetupDialog* Dialog() const { return dialog_.get(); }
    bool IsInstance() const { return isInstance_; }
    uint32_t HostContext() const { return context_; }

protected:
    FilterBase(const Identity& identity, ClassState& cls, IHost* host);
    virtual ~FilterBase();

    // A new object of the same class (reference count 1), or null.
    virtual FilterBase* NewObject() = 0;

    // The record this object persists. Its memory layout is the payload's.
    void BindRecord(void* record, const RecordDesc& desc) {
        record_ = static_cast<uint8_t*>(record);
        recordDesc_ = &desc;
    }
    const RecordDesc* Description() const { return recordDesc_; }
    // Payload hooks; the defaults copy the bound record as it stands.
    virtual uint32_t PayloadSize() const;
    virtual void EncodePayload(uint8_t* out) const;
    // Fewest payload bytes a blob must carry to be loaded.
    virtual uint32_t MinPayload() const { return PayloadSize(); }
    virtual void DecodePayload(const blob::Accepted& accepted);

    // The setup dialog model; null when it cannot be allocated.
    virtual std::unique_ptr<SetupDialog> MakeDialog();

    // The host this object was made with, or the module's host pointer for
    // filters whose factory takes none.
    IHost* HostPointer() const;
    // A host service by interface identifier (one reference, to be
    // released), or null when the host does not offer it.
    template <class I>
    I* QueryHostService(const Guid& iid) const {
        IHost* h = HostPointer();
        void* out = nullptr;
        if (h == nullptr || h->QueryInterface(&iid, &out) < 0) return nullptr;
        return static_cast<I*>(out);
    }

    // Kernel level for this instance, fixed when it was created: what the
    // host's processor-features service reports (scalar without one),
    // capped by ZVF_SIMD.
    SimdLevel Simd() const { return simd_; }
    SimdLevel ProcessorLevel() const;

    IHost* host_ = nullptr;  // set by factories that take the host pointer
    uint32_t context_ = 0;

private:
    const char16_t* Text(int index);
    void LoadFrom(IParameterBlob* source);

    const Identity& identity_;
    ClassState& class_;
    std::atomic<uint32_t> refs_{1};
    bool isInstance_ = false;
    SimdLevel simd_ = SimdLevel::scalar;

    // Setup dialog state; the saved position survives close and reopen.
    int32_t savedX_ = 0;
    int32_t savedY_ = 0;
    bool positionSaved_ = false;
    void* dialogWindow_ = nullptr;
    std::unique_ptr<SetupDialog> dialog_;

    uint8_t* record_ = nullptr;
    const RecordDesc* recordDesc_ = nullptr;
    CoreLoader coreLoader_;  // Family B saves through its own loader
};

// Per-class glue: class-wide state and object creation.
template <class Derived>
class Filter : public FilterBase {
public:
    static ClassState& Class() {
        static ClassState state;
        return state;
    }

protected:
    explicit Filter(IHost* host) : FilterBase(Derived::kIdentity, Class(), host) {}
    FilterBase* NewObject() override { return Construct(host_); }

public:
    // A new object, or null when memory runs out: nothing throws across the
    // interface, constructors included.
    static Derived* Construct(IHost* host) noexcept {
        try {
            return new Derived(host);
        } catch (...) {
            return nullptr;
        }
    }
};

// Factory helper: a new class object with reference count 1, or null.
template <class Derived>
IVideoFilter* MakeClassObject(IHost* host) {
    return Derived::Construct(host);
}

}  // namespace zvf
