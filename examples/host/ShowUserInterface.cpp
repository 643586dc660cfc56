// The interactive sign-on: dialogs, which are the plugin's, over the host's window.

#include <iostream>

#include "Show.h"

using namespace Halvorix::WebServicesUI;

void ShowUserInterface(WebServicesUIManager& ui)
{
    // A native window handle. This host has no window, and the sample plugin
    // shows no dialog.
    ui.SetHostApplicationWindow(4711);
    std::cout << "host window: " << ui.GetHostApplicationWindow() << "\n"
              << "dialog: Login answers " << Answer(ui.Login()) << ", IsLoggedIn "
              << Answer(ui.IsLoggedIn()) << std::endl;
    std::cout << "dialog: Logout answers " << Answer(ui.Logout()) << ", IsLoggedIn "
              << Answer(ui.IsLoggedIn()) << std::endl;
}
