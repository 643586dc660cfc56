#pragma once

#include <string>

#include <WebServicesManager.h>
#include <WebServicesUIManager.h>

// Each shows one use of the library, in the file of its name; the first is in
// SampleHost.cpp.
void ShowUser(Halvorix::WebServices::WebServicesManager const& manager);
void ShowCookieLogin(Halvorix::WebServices::WebServicesManager& manager);
void ShowUrlOverrides();
void ShowServer();
void ShowEncryptedToken();
void ShowUserInterface(Halvorix::WebServicesUI::WebServicesUIManager& ui);

std::string Utf8(std::wstring const& text);
char const* Answer(bool answer);
