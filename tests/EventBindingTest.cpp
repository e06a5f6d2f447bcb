// EventBinding: the binding lives exactly as long as the object, and a source window destroyed
// first takes it along, so the object's end never reaches freed memory.
#include <memory>

#include <wx/window.h>

#include <renderer/EventBinding.h>

#include "WxTest.h"

namespace {

struct SizeCounter {
  void OnSize(wxSizeEvent& event) {
    ++calls;
    event.Skip();
  }
  int calls = 0;
};

class EventBindings : public WxTest {
 protected:
  using SizeBinding = EventBinding<wxSizeEvent, SizeCounter>;

  std::unique_ptr<SizeBinding> Bind(wxWindow* window) {
    return std::make_unique<SizeBinding>(window, wxEVT_SIZE, &SizeCounter::OnSize, &counter);
  }
  static void SendSize(wxWindow* window) {
    wxSizeEvent event(wxSize(10, 10), window->GetId());
    event.SetEventObject(window);
    window->GetEventHandler()->ProcessEvent(event);
  }

  SizeCounter counter;
};

}  // namespace

TEST_F(EventBindings, DeliversUntilUnboundAndNeverAgain) {
  wxWindow* tile = MakeTile(wxPoint(0, 0), wxSize(50, 50));
  auto binding = Bind(tile);
  SendSize(tile);
  EXPECT_EQ(1, counter.calls);
  binding->Unbind();
  binding->Unbind();
  SendSize(tile);
  binding.reset();
  SendSize(tile);
  EXPECT_EQ(1, counter.calls);
}

TEST_F(EventBindings, EndingTheObjectUnbinds) {
  wxWindow* tile = MakeTile(wxPoint(0, 0), wxSize(50, 50));
  Bind(tile).reset();
  SendSize(tile);
  EXPECT_EQ(0, counter.calls);
}

// The sanitizer build reports any unbinding from the destroyed window.
TEST_F(EventBindings, ASourceDestroyedFirstTakesTheBindingWithIt) {
  wxWindow* tile = MakeTile(wxPoint(0, 0), wxSize(50, 50));
  auto binding = Bind(tile);
  tile->Destroy();
  binding->Unbind();
  binding.reset();
  EXPECT_EQ(0, counter.calls);
}
