#include "zvf/filter_base.h"

#include <cstring>
#include <new>

#include "platform.h"
#include "zvf/guids.h"
#include "zvf/module_services.h"

namespace zvf {
namespace {

std::atomic<int32_t> g_liveObjects{0};

// A plain dialog for filters whose own dialog is not built: the lifecycle
// still works, there is nothing to edit.
class PlainDialog final : public SetupDialog {
public:
    PlainDialog() : SetupDialog(0, 180, 90) {}
};

}  // namespace

int32_t LiveFilterObjects() { return g_liveObjects.load(); }

FilterBase::FilterBase(const Identity& identity, ClassState& cls, IHost* host)
    : host_(host), identity_(identity), class_(cls) {
    if (identity_.family == Family::B) {
        std::lock_guard<std::mutex> lock(class_.mutex);
        if (class_.live.load() == 0 && class_.strings.empty()) {
            const uint32_t ids[6] = {identity_.nameId,   identity_.categoryId,   identity_.descriptionId,
                                     identity_.vendorId, identity_.maintainerId, identity_.creatorId};
            for (uint32_t id : ids) class_.strings.push_back(LoadModuleString(id).value_or(std::u16string()));
            class_.strings.emplace_back(identity_.identifier);
        }
        class_.live.fetch_add(1);
    } else {
        class_.live.fetch_add(1);
    }
    g_liveObjects.fetch_add(1);
}

FilterBase::~FilterBase() {
    if (dialog_) CloseSetup();
    if (identity_.family == Family::B) {
        std::lock_guard<std::mutex> lock(class_.mutex);
        if (class_.live.fetch_sub(1) == 1) class_.strings.clear();
    } else {
        class_.live.fetch_sub(1);
    }
    g_liveObjects.fetch_sub(1);
}

Status FilterBase::QueryInterface(const Guid* iid, void** out) {
    if (out == nullptr) return status::pointer;
    if (iid != nullptr) {
        if (*iid == iid::IUnknown || *iid == iid::IVideoFilter) {
            *out = static_cast<IVideoFilter*>(this);
            AddRef();
            return status::ok;
        }
        if (isInstance_ && (*iid == iid::IFilterInstance || *iid == iid::IFilterInstanceAlt)) {
            *out = static_cast<IFilterInstance*>(this);
            AddRef();
            return status::ok;
        }
    }
    *out = nullptr;
    return status::no_interface;
}

uint32_t FilterBase::AddRef() { return refs_.fetch_add(1) + 1; }

uint32_t FilterBase::Release() {
    const uint32_t left = refs_.fetch_sub(1) - 1;
    if (left == 0) Destroy(1);
    return left;
}

void* FilterBase::Destroy(uint32_t flags) {
    if (flags & 1u) {
        delete this;
    } else {
        this->~FilterBase();
    }
    return this;
}

const char16_t* FilterBase::GetIdentifier() {
    if (identity_.family == Family::A) return identity_.identifier.data();
    return class_.strings.size() == 7 ? class_.strings[6].c_str() : identity_.identifier.data();
}

const char16_t* FilterBase::Text(int index) {
    if (identity_.family == Family::B) {
        // Entries: name, category, description, vendor, maintainer, creator.
        return static_cast<size_t>(index) < class_.strings.size() ? class_.strings[index].c_str() : nullptr;
    }
    const uint32_t ids[4] = {identity_.nameId, identity_.categoryId, identity_.descriptionId, identity_.vendorId};
    std::lock_guard<std::mutex> lock(class_.mutex);
    std::unique_ptr<std::u16string>& cache = class_.lazy[index];
    if (!cache) {
        try {
            std::optional<std::u16string> s = LoadModuleString(ids[index]);
            if (!s) return nullptr;  // a failed load gives no string; the next call tries again
            cache = std::make_unique<std::u16string>(std::move(*s));
        } catch (...) {
            return nullptr;
        }
    }
    return cache->c_str();
}

Status FilterBase::CreateInstance(IParameterBlob* source, uint32_t context, IFilterInstance** out) {
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    FilterBase* obj = NewObject();
    if (obj == nullptr) return status::out_of_memory;
    obj->context_ = context;
    obj->isInstance_ = true;
    obj->simd_ = obj->ProcessorLevel();
    if (source != nullptr) obj->LoadFrom(source);
    const Status s = obj->QueryInterface(&iid::IFilterInstance, reinterpret_cast<void**>(out));
    obj->Release();
    return s;
}

uint32_t FilterBase::PayloadSize() const { return recordDesc_ ? recordDesc_->payloadSize : 0; }

void FilterBase::EncodePayload(uint8_t* out) const {
    if (record_ != nullptr) std::memcpy(out, record_, PayloadSize());
}

void FilterBase::DecodePayload(const blob::Accepted& accepted) {
    if (record_ != nullptr) std::memcpy(record_, accepted.payload, PayloadSize());
}

void FilterBase::LoadFrom(IParameterBlob* source) {
    const void* data = source->GetData();
    if (data == nullptr) return;
    const uint32_t size = source->GetDataSize();
    blob::Accepted accepted{};
    if (blob::Check(static_cast<const uint8_t*>(data), size, identity_.identifier, MinPayload(), &accepted) ==
        blob::Verdict::Ok)
        DecodePayload(accepted);
}

Status FilterBase::SaveParameters(IParameterBlob** out) {
    if (out == nullptr) return status::pointer;
    CoreLoader& loader = identity_.family == Family::B ? coreLoader_ : ModuleCoreLoader();
    const Status created = loader.CreateObject(1, reinterpret_cast<void**>(out));
    if (created < 0 || *out == nullptr) {
        *out = nullptr;
        return created < 0 ? created : status::fail;
    }
    IParameterBlob* blob = *out;
    const uint32_t payload = PayloadSize();
    auto* mem = static_cast<uint8_t*>(blob->Allocate(blob::EnvelopeSize(identity_.identifier, payload)));
    if (mem == nullptr) {
        blob->Release();
        if (identity_.family == Family::B) {
            *out = nullptr;
            return status::fail;
        }
        // Family A reports the creation status and leaves the out-pointer as
        // creation set it; hosts must not use it after a failed allocation.
        return created;
    }
    EncodePayload(blob::WriteHeader(mem, identity_.identifier));
    return status::ok;
}

IHost* FilterBase::HostPointer() const { return host_ != nullptr ? host_ : ModuleHost(); }

SimdLevel FilterBase::ProcessorLevel() const {
    uint32_t features = 0;
    if (IProcessorFeatures* service = QueryHostService<IProcessorFeatures>(iid::IProcessorFeatures)) {
        features = service->GetFeatures();
        service->Release();
    }
    return ChooseSimdLevel(features);
}

std::unique_ptr<SetupDialog> FilterBase::MakeDialog() { return std::unique_ptr<SetupDialog>(new (std::nothrow) PlainDialog()); }

Status FilterBase::OpenSetup(void* parentWindow) {
    if (dialog_) return status::ok;
    std::unique_ptr<SetupDialog> dialog;
    try {
        dialog = MakeDialog();
    } catch (...) {
        dialog.reset();
    }
    if (!dialog) return status::out_of_memory;
    if (!dialog->Initialize(HostPointer(), context_)) return status::no_interface;
    if (!dialog->Create(parentWindow)) return status::no_interface;
    dialog_ = std::move(dialog);
    return status::ok;
}

Status FilterBase::ShowSetup(int32_t show) {
    if (!dialog_ || dialog_->View() == nullptr) return status::fail;
    DialogView& view = *dialog_->View();
    if (show != 0) {
        if (positionSaved_) {
            view.MoveTo(savedX_, savedY_);
        } else {
            Point cursor{0, 0};
            platform::CursorPos(&cursor);
            Rect monitor{};
            const bool found = dialog_->PlacesInWorkArea() ? platform::MonitorWorkAreaAt(cursor, &monitor)
                                                           : platform::MonitorRectAt(cursor, &monitor);
            if (!found) monitor = platform::ScreenRect();
            const Point p = PlaceAtCursor(view.WindowRect(), cursor, monitor);
            view.MoveTo(p.x, p.y);
        }
        dialogWindow_ = view.Handle();
        dialog_->OnShown();
    } else {
        const Rect r = view.WindowRect();
        savedX_ = r.left;
        savedY_ = r.top;
        positionSaved_ = true;
    }
    view.Show(show != 0);
    return status::ok;
}

Status FilterBase::CloseSetup() {
    if (!dialog_) return status::ok;
    if (DialogView* view = dialog_->View()) {
        const Rect r = view->WindowRect();
        savedX_ = r.left;
        savedY_ = r.top;
        positionSaved_ = true;
    }
    dialog_->DestroyWindow();
    dialog_.reset();
    dialogWindow_ = nullptr;
    return status::ok;
}

Status FilterBase::RefreshSetup() {
    if (!dialog_) return status::pointer;
    dialog_->Reload();
    return status::ok;
}

}  // namespace zvf
