#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/log.h>

namespace {

class TestApp : public wxApp {
 public:
  bool OnInit() override {
    SetExitOnFrameDelete(false);
    return true;
  }
};

void on_assert(const wxString& file, int line, const wxString& function, const wxString& condition,
               const wxString& message) {
  ADD_FAILURE_AT(file.utf8_str(), line) << function << ": " << condition << " " << message;
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  wxApp::SetInstance(new TestApp);
  if (!wxEntryStart(argc, argv) || !wxTheApp->CallOnInit()) return 1;
  delete wxLog::SetActiveTarget(new wxLogStderr);  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it is the log's
  wxSetAssertHandler(on_assert);
  int result = 0;
  {
    wxGUIEventLoop loop;
    const wxEventLoopActivator active(&loop);
    result = RUN_ALL_TESTS();
  }
  wxEntryCleanup();
  return result;
}
