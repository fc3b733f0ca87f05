#pragma once

#include <QString>

// The names the application object carries. Qt's native settings store takes its place from
// them: on a desktop the organisation and application names name the file; on the phone the
// organisation domain, reversed, and the application name name the user-defaults domain,
// which is then exactly the bundle identifier, so the "tp_" keys are the app's own user
// defaults under their own names.
inline constexpr auto TPOrganizationName = "TPCompanion";
inline constexpr auto TPOrganizationDomain = "tpcompanion.com";
inline constexpr auto TPApplicationName = "TPCompanion";

// Sets the three names on the application object.
void TPApplyAppIdentity();

// The user-defaults domain Qt's native settings use on the phone for the names the
// application object carries: the organisation domain's labels reversed, then the
// application name ("com.tpcompanion.TPCompanion").
QString TPUserDefaultsDomain();
