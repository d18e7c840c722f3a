#include "zvf/setup_dialog.h"

#include "zvf/module_services.h"

namespace zvf {

bool SetupDialog::Create(void* parent) {
    view_ = CreateDialogView(templateId_, widthDlu_, heightDlu_, parent);
    return view_ != nullptr;
}

void SetupDialog::NotifyChanged() const {
    if (ISharedHostObject* shared = SharedHostObject()) shared->ParametersChanged(context_);
}

}  // namespace zvf
