// Windows only (Google Benchmark is not built for MinGW): a property read of the form through
// IDispatch::Invoke against the same read through the vtable, with the form from parcelon.dll
// (whose type library serves Invoke). A minimal harness of its own: each figure is the median of
// five repetitions of a timed batch of calls, printed side by side with their ratio, as
// CompareWith prints them. `--quick` runs one short repetition: it shows that it still runs.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/ComPtr.h"
#include "ModuleLoader.h"

namespace {

// Nanoseconds per call of `call`, the median of `repetitions` batches of `calls` calls.
template <class Call>
double MedianNanoseconds(int repetitions, int calls, Call call) {
  std::vector<double> perCall;
  for (int r = 0; r < repetitions; ++r) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) call();
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    perCall.push_back(spent.count() / calls);
  }
  std::sort(perCall.begin(), perCall.end());
  return perCall[perCall.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
  const int repetitions = quick ? 1 : 5;
  const int calls = quick ? 1000 : 1000000;
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const LoadedModule& module = LoadedModule::Get();
  ComPtr<IClassFactory> factory;
  ComPtr<INA_Form7> form;
  if (!module.getClassObject ||
      FAILED(module.getClassObject(CLSID_NA_Form, IidOf<IClassFactory>(), factory.ReleaseAndGetVoidAddress())) ||
      FAILED(factory->CreateInstance(nullptr, IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress()))) {
    std::printf("cannot create a form from %s\n", PARCELON_MODULE_PATH);
    return 1;
  }
  form->put_TransactionRecordNumber(1001);
  OLECHAR name[] = L"TransactionRecordNumber";
  LPOLESTR names[] = {name};
  DISPID id = 0;
  if (FAILED(form->GetIDsOfNames(IID_NULL, names, 1, 0, &id))) {
    std::printf("no type information for the form\n");
    return 1;
  }

  LONG value = 0;
  const double vtable = MedianNanoseconds(repetitions, calls, [&] { form->get_TransactionRecordNumber(&value); });
  DISPPARAMS none{};
  VARIANT result;
  bool failed = false;
  const double invoke = MedianNanoseconds(repetitions, calls, [&] {
    VariantInit(&result);
    failed |= FAILED(form->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr)) ||
              result.lVal != 1001;
  });
  if (failed || value != 1001) {
    std::printf("a call failed\n");
    return 1;
  }
  std::printf("median get_TransactionRecordNumber through the vtable = %.3f ns (%d repetitions of %d calls)\n",
              vtable, repetitions, calls);
  std::printf("median get_TransactionRecordNumber through IDispatch::Invoke = %.3f ns (%d repetitions of %d calls)\n",
              invoke, repetitions, calls);
  std::printf("ratio Invoke / vtable = %.3f\n", invoke / vtable);
  form.Reset();
  factory.Reset();
  CoUninitialize();
  return 0;
}
