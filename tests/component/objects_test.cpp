// The component's COM objects: the interfaces each class answers for, object identity, reference
// counting, aggregation, the class objects and the module's count.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComponentTest.h"
#include "component/Module.h"
#include "component/NA_Form.h"

namespace parcelon::test {
namespace {

using ObjectsTest = ComponentTest;

struct Answer {
  const char* name;
  IID iid;
};

// The interfaces of each coclass's chain, with IUnknown and IDispatch.
const std::vector<Answer> kSessionInterfaces = {
    {"IUnknown", IidOf<IUnknown>()},   {"IDispatch", IidOf<IDispatch>()},
    {"INA_Forms", IidOf<INA_Forms>()}, {"INA_Forms2", IidOf<INA_Forms2>()},
    {"INA_Base", IidOf<INA_Base>()},   {"INA_Base2", IidOf<INA_Base2>()},
    {"INA_Base3", IidOf<INA_Base3>()}, {"INA_Base4", IidOf<INA_Base4>()},
    {"INA_Base5", IidOf<INA_Base5>()},
};
const std::vector<Answer> kFormInterfaces = {
    {"IUnknown", IidOf<IUnknown>()},   {"IDispatch", IidOf<IDispatch>()},
    {"INA_Form", IidOf<INA_Form>()},   {"INA_Form2", IidOf<INA_Form2>()},
    {"INA_Form3", IidOf<INA_Form3>()}, {"INA_Form4", IidOf<INA_Form4>()},
    {"INA_Form5", IidOf<INA_Form5>()}, {"INA_Form6", IidOf<INA_Form6>()},
    {"INA_Form7", IidOf<INA_Form7>()},
};

ComPtr<IUnknown> Create(const CLSID& clsid) {
  ComPtr<IUnknown> object;
  EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<IUnknown>(),
                                   object.ReleaseAndGetVoidAddress()));
  return object;
}

// Every interface of `yes` is answered, from every other one, and leads back to one IUnknown;
// every interface of `no` is refused with a null pointer.
void ExpectAnswers(IUnknown* object, const std::vector<Answer>& yes,
                   const std::vector<Answer>& no) {
  ComPtr<IUnknown> identity;
  ASSERT_EQ(S_OK, object->QueryInterface(IidOf<IUnknown>(), identity.ReleaseAndGetVoidAddress()));
  for (const Answer& from : yes) {
    ComPtr<IUnknown> start;
    ASSERT_EQ(S_OK, object->QueryInterface(from.iid, start.ReleaseAndGetVoidAddress()))
        << from.name;
    for (const Answer& to : yes) {
      ComPtr<IUnknown> reached;
      EXPECT_EQ(S_OK, start->QueryInterface(to.iid, reached.ReleaseAndGetVoidAddress()))
          << from.name << " -> " << to.name;
      ComPtr<IUnknown> back;
      ASSERT_EQ(S_OK, reached->QueryInterface(IidOf<IUnknown>(), back.ReleaseAndGetVoidAddress()));
      EXPECT_EQ(identity.Get(), back.Get()) << from.name << " -> " << to.name;
    }
    for (const Answer& refused : no) {
      void* out = &out;
      EXPECT_EQ(E_NOINTERFACE, start->QueryInterface(refused.iid, &out)) << refused.name;
      EXPECT_EQ(nullptr, out) << refused.name;
    }
  }
}

// The session, a form created alone and a form the session added: none answers for the other's
// interfaces or for the class factory.
TEST_F(ObjectsTest, EachObjectAnswersForItsChainOnly) {
  const Answer factory{"IClassFactory", IidOf<IClassFactory>()};
  std::vector<Answer> notSession(kFormInterfaces.begin() + 2, kFormInterfaces.end());
  std::vector<Answer> notForm(kSessionInterfaces.begin() + 2, kSessionInterfaces.end());
  notSession.push_back(factory);
  ExpectAnswers(Create(CLSID_NA_Forms).Get(), kSessionInterfaces, notSession);
  ComPtr<INA_Form> added;
  ASSERT_EQ(S_OK, session_->AddForm(added.ReleaseAndGetAddressOf()));
  ExpectAnswers(added.Get(), kFormInterfaces, notForm);
  notForm.push_back(factory);
  ExpectAnswers(Create(CLSID_NA_Form).Get(), kFormInterfaces, notForm);
}

// The slots of an interface reached by QueryInterface are the object's own: the custom interfaces
// of the session answer through their own vtable, the form's through the last version's.
TEST_F(ObjectsTest, InterfacesReachedByQueryInterfaceCallTheirOwnSlots) {
  ComPtr<INA_Base2> base2;
  ASSERT_EQ(S_OK, session_.As(base2));
  BSTR text = nullptr;
  ASSERT_EQ(S_OK, base2->get_DTD_ID(&text));
  EXPECT_EQ("LXMAIN", Take(text));

  ComPtr<INA_Form> added;
  ASSERT_EQ(S_OK, session_->AddForm(added.ReleaseAndGetAddressOf()));
  ComPtr<INA_Form6> form6;
  ASSERT_EQ(S_OK, added.As(form6));
  ASSERT_EQ(S_OK, form6->put_SynchMultiple(VARIANT_TRUE));
  ASSERT_EQ(S_OK, form6->put_UseColor(VARIANT_FALSE));
  ComPtr<INA_Form7> form7;
  ASSERT_EQ(S_OK, added.As(form7));
  VARIANT_BOOL synchMultiple = VARIANT_FALSE;
  ASSERT_EQ(S_OK, form7->get_SynchMultiple(&synchMultiple));
  EXPECT_EQ(VARIANT_TRUE, synchMultiple);
}

// For both classes: no type information, reference counts that follow AddRef and Release.
TEST_F(ObjectsTest, DispatchAndReferenceCounts) {
  for (const CLSID& clsid : {CLSID_NA_Forms, CLSID_NA_Form}) {
    IUnknown* object = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<IUnknown>(),
                                     reinterpret_cast<void**>(&object)));
    EXPECT_EQ(2u, object->AddRef());
    IDispatch* dispatch = nullptr;
    ASSERT_EQ(S_OK,
              object->QueryInterface(IidOf<IDispatch>(), reinterpret_cast<void**>(&dispatch)));
    UINT count = 7;
    EXPECT_EQ(S_OK, dispatch->GetTypeInfoCount(&count));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(2u, dispatch->Release());
    EXPECT_EQ(1u, object->Release());
    EXPECT_EQ(0u, object->Release());
  }
}

// The session holds one reference to each of its forms, given up by RemoveAllForms or with the
// session; a caller's reference keeps the form alive after both.
TEST_F(ObjectsTest, FormOutlivesTheSessionWhileACallerHoldsIt) {
  INA_Form* form = nullptr;
  ASSERT_EQ(S_OK, session_->AddForm(&form));
  EXPECT_EQ(3u, form->AddRef());
  EXPECT_EQ(2u, form->Release());

  base_.Reset();
  session_.Reset();
  ASSERT_EQ(S_OK, form->put_To(MakeBstr("a@example.com").Get()));
  BSTR to = nullptr;
  ASSERT_EQ(S_OK, form->get_To(&to));
  EXPECT_EQ("a@example.com", Take(to));
  EXPECT_EQ(0u, form->Release());
}

TEST_F(ObjectsTest, RemoveAllFormsGivesUpTheSessionsReferences) {
  INA_Form* form = nullptr;
  ASSERT_EQ(S_OK, session_->AddForm(&form));
  ASSERT_EQ(S_OK, session_->RemoveAllForms());
  EXPECT_EQ(2u, form->AddRef());
  EXPECT_EQ(1u, form->Release());
  EXPECT_EQ(0u, form->Release());
  EXPECT_EQ(E_UNEXPECTED, base_->Initialize());
}

// An outer object that aggregates one of the component's classes: it answers IOuterOnly (here
// IClassFactory, which neither class has) itself and hands every other query to the inner unknown.
class Outer final : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (riid == IidOf<IUnknown>() || riid == IidOf<IClassFactory>()) {
      *ppv = static_cast<IUnknown*>(this);
      AddRef();
      return S_OK;
    }
    ++delegatedQueries;
    return inner ? inner->QueryInterface(riid, ppv) : (*ppv = nullptr, E_NOINTERFACE);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }

  ULONG refs = 1;
  int delegatedQueries = 0;
  IUnknown* inner = nullptr;
};

// Inside an outer object: queries on the class's interfaces lead back to the outer IUnknown and
// count on the outer object; the inner unknown alone keeps the object, and the module, alive.
TEST_F(ObjectsTest, ClassesLiveInsideAnOuterObject) {
  const struct {
    const CLSID& clsid;
    Answer some;
  } cases[] = {{CLSID_NA_Forms, {"INA_Base5", IidOf<INA_Base5>()}},
               {CLSID_NA_Form, {"INA_Form7", IidOf<INA_Form7>()}}};
  session_.Reset();
  base_.Reset();
  ASSERT_EQ(S_OK, CanUnloadModule());
  for (const auto& c : cases) {
    SCOPED_TRACE(c.some.name);
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, GetClassObject(c.clsid, IidOf<IClassFactory>(), factory.ReleaseAndGetVoidAddress()));
    Outer outer;
    ASSERT_EQ(S_OK, factory->CreateInstance(&outer, IidOf<IUnknown>(),
                                            reinterpret_cast<void**>(&outer.inner)));
    EXPECT_EQ(1u, outer.refs) << "creating takes no reference to the outer object";
    EXPECT_EQ(1, ModuleLiveObjects());

    IUnknown* some = nullptr;
    ASSERT_EQ(S_OK, outer.QueryInterface(c.some.iid, reinterpret_cast<void**>(&some)));
    EXPECT_EQ(2u, outer.refs);
    IUnknown* identity = nullptr;
    ASSERT_EQ(S_OK, some->QueryInterface(IidOf<IUnknown>(), reinterpret_cast<void**>(&identity)));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), identity);
    void* outerOnly = nullptr;
    EXPECT_EQ(S_OK, some->QueryInterface(IidOf<IClassFactory>(), &outerOnly))
        << "the inner object's interfaces answer for the outer one's";
    EXPECT_EQ(1, outer.delegatedQueries) << "only the query for the inner interface went inside";
    EXPECT_EQ(4u, outer.refs);
    identity->Release();
    static_cast<IUnknown*>(outerOnly)->Release();
    EXPECT_EQ(3u, some->AddRef()) << "AddRef on an inner interface counts on the outer object";
    some->Release();
    some->Release();
    EXPECT_EQ(1u, outer.refs);

    // The inner unknown is an object of its own, not the outer one and not the interface.
    IUnknown* innerIdentity = nullptr;
    ASSERT_EQ(S_OK, outer.inner->QueryInterface(IidOf<IUnknown>(), reinterpret_cast<void**>(&innerIdentity)));
    EXPECT_EQ(outer.inner, innerIdentity);
    EXPECT_EQ(1u, innerIdentity->Release());
    EXPECT_EQ(S_FALSE, CanUnloadModule());
    EXPECT_EQ(0u, outer.inner->Release());
    EXPECT_EQ(S_OK, CanUnloadModule());
  }
}

// COM's rules for creation inside an outer object: it must ask for IUnknown.
TEST_F(ObjectsTest, AnOuterObjectMustAskForIUnknown) {
  for (const CLSID& clsid : {CLSID_NA_Forms, CLSID_NA_Form}) {
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK,
              GetClassObject(clsid, IidOf<IClassFactory>(), factory.ReleaseAndGetVoidAddress()));
    Outer outer;
    for (const IID& iid : {IidOf<IDispatch>(), IidOf<INA_Forms>(), IidOf<INA_Form>()}) {
      void* object = &object;
      EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, iid, &object));
      EXPECT_EQ(nullptr, object);
    }
    void* object = &object;
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IidOf<IClassFactory>(), &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IidOf<IUnknown>(), nullptr));
    EXPECT_EQ(1u, outer.refs);
  }
}

// The module's count: every session and form alive, alone or added by a session, and every lock.
TEST_F(ObjectsTest, TheModuleCountsObjectsAndLocks) {
  EXPECT_EQ(1, ModuleLiveObjects());
  EXPECT_EQ(S_FALSE, CanUnloadModule());
  ComPtr<INA_Form> form;
  ASSERT_EQ(S_OK, session_->AddForm(form.ReleaseAndGetAddressOf()));
  ComPtr<IUnknown> alone = Create(CLSID_NA_Form);
  EXPECT_EQ(3, ModuleLiveObjects());
  session_.Reset();
  base_.Reset();
  alone.Reset();
  EXPECT_EQ(1, ModuleLiveObjects()) << "the added form outlives its session";
  form.Reset();
  EXPECT_EQ(0, ModuleLiveObjects());
  EXPECT_EQ(S_OK, CanUnloadModule());

  ComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, GetClassObject(CLSID_NA_Form, IidOf<IClassFactory>(),
                                 factory.ReleaseAndGetVoidAddress()));
  ASSERT_EQ(S_OK, factory->LockServer(TRUE));
  ASSERT_EQ(S_OK, factory->LockServer(TRUE));
  EXPECT_EQ(2, ModuleLocks());
  ASSERT_EQ(S_OK, factory->LockServer(FALSE));
  EXPECT_EQ(S_FALSE, CanUnloadModule());
  ASSERT_EQ(S_OK, factory->LockServer(FALSE));
  EXPECT_EQ(S_OK, CanUnloadModule());
  EXPECT_EQ(E_UNEXPECTED, factory->LockServer(FALSE)) << "no lock to give up";
  EXPECT_EQ(0, ModuleLocks());
}

TEST_F(ObjectsTest, OnlyTheComponentsClassesHaveClassObjects) {
  void* factory = &factory;
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
            GetClassObject(LIBID_PARCELONLib, IidOf<IClassFactory>(), &factory));
  EXPECT_EQ(nullptr, factory);
}

TEST_F(ObjectsTest, ClassesAreGoneWithTheirRegistration) {
  registration_.reset();
  ComPtr<INA_Forms> session;
  EXPECT_EQ(REGDB_E_CLASSNOTREG,
            CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER, IidOf<INA_Forms>(),
                             session.ReleaseAndGetVoidAddress()));
}

}  // namespace
}  // namespace parcelon::test
