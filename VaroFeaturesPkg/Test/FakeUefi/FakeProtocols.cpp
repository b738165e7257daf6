/** @file
  FakeUefi: events, task priority levels, handles, protocols.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/FakeUefi.hpp"

void FakeUefi::Signal(Event& event) {
  if ((event.Type & EVT_NOTIFY_SIGNAL) != 0 &&
      std::find(signalled_.begin(), signalled_.end(), &event) == signalled_.end()) {
    signalled_.push_back(&event);
  }
}

/// Runs notifications above the current TPL: the highest first, equal ones in the order of their signals.
void FakeUefi::DispatchNotifications() {
  while (!signalled_.empty()) {
    const auto next = std::max_element(signalled_.begin(), signalled_.end(),
                                       [](const Event* a, const Event* b) { return a->NotifyTpl < b->NotifyTpl; });
    Event& event = **next;
    if (event.NotifyTpl <= tpl_) {
      return;
    }
    signalled_.erase(next);
    const EFI_TPL interrupted = std::exchange(tpl_, event.NotifyTpl);
    event.Notify(&event, event.Context);
    if (tpl_ != event.NotifyTpl) {
      Misuse("a notification left the TPL changed");
    }
    tpl_ = interrupted;
  }
}

void FakeUefi::FillEventServices() {
  bootServices_.RaiseTPL = [](EFI_TPL tpl) {
    if (tpl < Current().tpl_) {
      Misuse("RaiseTPL to a lower level");
    }
    return std::exchange(Current().tpl_, tpl);
  };
  bootServices_.RestoreTPL = [](EFI_TPL tpl) {
    if (tpl > Current().tpl_) {
      Misuse("RestoreTPL to a higher level");
    }
    Current().tpl_ = tpl;
    Current().DispatchNotifications();
  };
  bootServices_.CreateEvent = [](UINT32 type, EFI_TPL tpl, EFI_EVENT_NOTIFY notify, VOID* context,
                                 EFI_EVENT* event) -> EFI_STATUS {
    if (event == nullptr ||
        ((type & EVT_NOTIFY_SIGNAL) != 0 && (notify == nullptr || tpl <= TPL_APPLICATION || tpl >= TPL_HIGH_LEVEL))) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::Registration);
    if (!EFI_ERROR(status)) {
      *event = &Current().events_.emplace_back(Event{type, tpl, notify, context});
    }
    return status;
  };
  bootServices_.SignalEvent = [](EFI_EVENT event) -> EFI_STATUS {
    Current().Signal(*static_cast<Event*>(event));
    Current().DispatchNotifications();
    return EFI_SUCCESS;
  };
  bootServices_.CloseEvent = [](EFI_EVENT event) -> EFI_STATUS {
    FakeUefi& uefi = Current();
    std::erase(uefi.signalled_, static_cast<Event*>(event));
    uefi.registrations_.remove_if([event](const Registration& entry) { return entry.Signalled == event; });
    uefi.events_.remove_if([event](const Event& entry) { return &entry == event; });
    return EFI_SUCCESS;
  };
}

FakeUefi::Installation* FakeUefi::Installed(EFI_HANDLE handle, const EFI_GUID& guid) {
  const auto found = std::find_if(installed_.begin(), installed_.end(), [&](const Installation& entry) {
    return entry.Handle == handle && SameGuid(entry.Guid, guid);
  });
  return found == installed_.end() ? nullptr : &*found;
}

EFI_STATUS FakeUefi::InstallInterface(EFI_HANDLE* handle, const EFI_GUID* guid, void* interface) {
  if (handle == nullptr || guid == nullptr || (*handle != nullptr && Installed(*handle, *guid) != nullptr)) {
    return EFI_INVALID_PARAMETER;
  }
  if (*handle == nullptr) {
    *handle = &handles_.emplace_back();
  }
  installed_.push_back({*handle, *guid, interface});
  for (const Registration& registration : registrations_) {
    if (SameGuid(registration.Guid, *guid)) {
      Signal(*registration.Signalled);
    }
  }
  DispatchNotifications();
  return EFI_SUCCESS;
}

EFI_STATUS FakeUefi::UninstallInterface(EFI_HANDLE handle, const EFI_GUID& guid, const void* interface) {
  const Installation* const found = Installed(handle, guid);
  if (found == nullptr || found->Interface != interface) {
    return EFI_NOT_FOUND;
  }
  installed_.erase(installed_.begin() + (found - installed_.data()));
  return EFI_SUCCESS;
}

EFI_HANDLE FakeUefi::Install(const EFI_GUID& guid, void* interface, EFI_HANDLE handle) {
  if (EFI_ERROR(InstallInterface(&handle, &guid, interface))) {
    Misuse("a protocol is installed twice on a handle");
  }
  return handle;
}

std::vector<EFI_HANDLE> FakeUefi::HandlesOf(const EFI_GUID& guid) {
  std::vector<EFI_HANDLE> handles;
  for (const Installation& entry : installed_) {
    if (SameGuid(entry.Guid, guid)) {
      handles.push_back(entry.Handle);
    }
  }
  return handles;
}

namespace {

/// Calls `each` with each pair of a null-terminated list, up to the first error.
EFI_STATUS ForEachPair(VA_LIST list, auto each) {
  EFI_STATUS status = EFI_SUCCESS;
  while (!EFI_ERROR(status)) {
    auto* const guid = VA_ARG(list, EFI_GUID*);
    if (guid == nullptr) {
      break;
    }
    status = each(guid, VA_ARG(list, void*));
  }
  return status;
}

EFI_STATUS EFIAPI InstallMultiple(EFI_HANDLE* handle, ...) {
  VA_LIST list;
  VA_START(list, handle);
  const EFI_STATUS status = ForEachPair(list, [handle](EFI_GUID* guid, void* interface) {
    return gBS->InstallProtocolInterface(handle, guid, EFI_NATIVE_INTERFACE, interface);
  });
  VA_END(list);
  return status;
}

EFI_STATUS EFIAPI UninstallMultiple(EFI_HANDLE handle, ...) {
  VA_LIST list;
  VA_START(list, handle);
  const EFI_STATUS status = ForEachPair(list, [handle](EFI_GUID* guid, void* interface) {
    return gBS->UninstallProtocolInterface(handle, guid, interface);
  });
  VA_END(list);
  return EFI_ERROR(status) ? EFI_INVALID_PARAMETER : status;
}

}  // namespace

void FakeUefi::FillProtocolServices() {
  bootServices_.InstallProtocolInterface = [](EFI_HANDLE* handle, EFI_GUID* guid, EFI_INTERFACE_TYPE,
                                              VOID* interface) -> EFI_STATUS {
    const EFI_STATUS status = Current().Enter(Service::Registration);
    return EFI_ERROR(status) ? status : Current().InstallInterface(handle, guid, interface);
  };
  bootServices_.RegisterProtocolNotify = [](EFI_GUID* guid, EFI_EVENT event, VOID** key) -> EFI_STATUS {
    if (guid == nullptr || event == nullptr || key == nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::Registration);
    if (!EFI_ERROR(status)) {
      *key = &Current().registrations_.emplace_back(Registration{*guid, static_cast<Event*>(event)});
    }
    return status;
  };
  bootServices_.LocateProtocol = [](EFI_GUID* guid, VOID* key, VOID** interface) -> EFI_STATUS {
    if (guid == nullptr || interface == nullptr || key != nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    *interface = nullptr;
    EFI_STATUS status = Current().Enter(Service::ProtocolLookup);
    if (const auto answer = Current().LookupStatus.find(*guid); answer != Current().LookupStatus.end()) {
      status = answer->second;
    }
    if (EFI_ERROR(status)) {
      return status;
    }
    const auto handles = Current().HandlesOf(*guid);
    if (handles.empty()) {
      return EFI_NOT_FOUND;
    }
    *interface = Current().Installed(handles.front(), *guid)->Interface;
    return status;
  };
  bootServices_.LocateHandle = [](EFI_LOCATE_SEARCH_TYPE type, EFI_GUID* guid, VOID*, UINTN* size,
                                  EFI_HANDLE* buffer) -> EFI_STATUS {
    if (type != ByProtocol) {
      return EFI_UNSUPPORTED;  // not needed by any test
    }
    const EFI_STATUS status = Current().Enter(Service::ProtocolLookup);
    if (EFI_ERROR(status)) {
      return status;
    }
    const auto handles = Current().HandlesOf(*guid);
    if (handles.empty()) {
      return EFI_NOT_FOUND;
    }
    const UINTN room = std::exchange(*size, handles.size() * sizeof(EFI_HANDLE));
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    std::copy(handles.begin(), handles.end(), buffer);
    return EFI_SUCCESS;
  };
  bootServices_.LocateHandleBuffer = [](EFI_LOCATE_SEARCH_TYPE, EFI_GUID* guid, VOID*, UINTN* count,
                                        EFI_HANDLE** buffer) -> EFI_STATUS {
    const EFI_STATUS status = Current().Enter(Service::ProtocolLookup);
    const auto handles = Current().HandlesOf(*guid);
    if (EFI_ERROR(status) || handles.empty()) {
      return EFI_ERROR(status) ? status : EFI_NOT_FOUND;
    }
    *count = handles.size();
    *buffer = static_cast<EFI_HANDLE*>(Current().GivePool(handles.size() * sizeof(EFI_HANDLE)));
    std::copy(handles.begin(), handles.end(), *buffer);
    return EFI_SUCCESS;
  };
  bootServices_.OpenProtocol = [](EFI_HANDLE handle, EFI_GUID* guid, VOID** interface, EFI_HANDLE, EFI_HANDLE,
                                  UINT32 attributes) -> EFI_STATUS {
    const EFI_STATUS status = Current().Enter(Service::ProtocolLookup);
    const Installation* const found = Current().Installed(handle, *guid);
    if (EFI_ERROR(status) || found == nullptr) {
      return EFI_ERROR(status) ? status : EFI_UNSUPPORTED;
    }
    if (attributes != EFI_OPEN_PROTOCOL_TEST_PROTOCOL) {
      *interface = found->Interface;
    }
    return EFI_SUCCESS;
  };
  bootServices_.HandleProtocol = [](EFI_HANDLE handle, EFI_GUID* guid, VOID** interface) -> EFI_STATUS {
    return gBS->OpenProtocol(handle, guid, interface, nullptr, nullptr, EFI_OPEN_PROTOCOL_BY_HANDLE_PROTOCOL);
  };
  bootServices_.UninstallProtocolInterface = [](EFI_HANDLE handle, EFI_GUID* guid, VOID* interface) -> EFI_STATUS {
    const EFI_STATUS status = Current().Enter(Service::Registration);
    return EFI_ERROR(status) ? status : Current().UninstallInterface(handle, *guid, interface);
  };
  bootServices_.InstallMultipleProtocolInterfaces = InstallMultiple;
  bootServices_.UninstallMultipleProtocolInterfaces = UninstallMultiple;
}
