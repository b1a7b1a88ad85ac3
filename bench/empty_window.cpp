#include <wx/app.h>
#include <wx/frame.h>

/// What the toolkit takes to show a window with nothing in it.
class EmptyWindow : public wxApp {
  bool OnInit() override { return (new wxFrame(nullptr, wxID_ANY, "Empty window"))->Show(); }
};

wxIMPLEMENT_APP(EmptyWindow);
