#include "table_manager.h"

#include <algorithm>

namespace zvf::filters {
namespace {

// Static objects: built when the module is loaded, released when it is
// unloaded.
ZelTableManager g_firstCache(5);
ZelTableManager g_secondCache(5);

}  // namespace

ZelTableManager& FirstTableCache() { return g_firstCache; }
ZelTableManager& SecondTableCache() { return g_secondCache; }

ZelTableManager::~ZelTableManager() {
    for (ITableBuffer* item : items_)
        if (item != nullptr) item->Release();
}

int32_t ZelTableManager::Acquire(ITableBuffer** out, uint32_t key, uint32_t size) {
    std::lock_guard<std::mutex> lock(lock_);
    if (out == nullptr) return status::invalid_arg;
    if (*out != nullptr) {
        (*out)->Release();
        *out = nullptr;
    }
    // Room for the insertion first, so nothing below can fail half-way.
    try {
        items_.reserve(items_.size() + 1);
    } catch (...) {
        return status::out_of_memory;
    }

    auto found = std::find_if(items_.begin(), items_.end(),
                              [key](ITableBuffer* item) { return item != nullptr && item->Key() == key; });
    ITableBuffer* item = nullptr;  // holds the list's or the creation's reference
    int32_t result = 1;
    if (found != items_.end()) {
        item = *found;
        items_.erase(found);
        if (item->Size() != size) {
            item->Init(size, key);
        } else {
            result = 0;
        }
    } else {
        void* created = nullptr;
        const Status s = CreateTableBuffer(nullptr, &kTableBufferIid, &created);
        if (s < 0) return s;
        item = static_cast<ITableBuffer*>(created);
        item->Init(size, key);
        // The trim stops one short: it empties the last kept position, so
        // after the first trim the list has capacity + 1 positions holding at
        // most capacity buffers. Clients have always seen this eviction.
        if (items_.size() > capacity_) {
            const size_t from = capacity_ > 0 ? capacity_ - 1 : 0;
            for (size_t i = from; i < items_.size(); ++i)
                if (items_[i] != nullptr) items_[i]->Release();
            items_.resize(capacity_);
            if (capacity_ > 0) items_[capacity_ - 1] = nullptr;
        }
    }
    // The local reference moves into the list; the caller gets one more.
    items_.insert(items_.begin(), item);
    item->AddRef();
    *out = item;
    return result;
}

int32_t ZelTableManager::Remove(uint32_t key) {
    std::lock_guard<std::mutex> lock(lock_);
    auto found = std::find_if(items_.begin(), items_.end(),
                              [key](ITableBuffer* item) { return item != nullptr && item->Key() == key; });
    if (found == items_.end()) return 1;
    (*found)->Release();
    items_.erase(found);
    return 0;
}

size_t ZelTableManager::Positions() const {
    std::lock_guard<std::mutex> lock(lock_);
    return items_.size();
}

bool ZelTableManager::KeyAt(size_t position, uint32_t* key) const {
    std::lock_guard<std::mutex> lock(lock_);
    if (position >= items_.size() || items_[position] == nullptr) return false;
    *key = items_[position]->Key();
    return true;
}

size_t ZelTableManager::LiveItems() const {
    std::lock_guard<std::mutex> lock(lock_);
    return static_cast<size_t>(std::count_if(items_.begin(), items_.end(), [](ITableBuffer* i) { return i != nullptr; }));
}

}  // namespace zvf::filters
