# The phone app's bundle: one place for its identity, used by the iOS build and by the test
# that fills the Info.plist template on the desktop.
set(TP_BUNDLE_IDENTIFIER "com.tpcompanion.TPCompanion")
set(TP_BUNDLE_NAME "TPCompanion")
set(TP_IOS_PACKAGING_DIR "${CMAKE_CURRENT_LIST_DIR}")

# Sets the MACOSX_BUNDLE_* variables the Info.plist template reads.
macro(tp_set_bundle_variables executable_name)
    set(MACOSX_BUNDLE_EXECUTABLE_NAME "${executable_name}")
    set(MACOSX_BUNDLE_GUI_IDENTIFIER "${TP_BUNDLE_IDENTIFIER}")
    set(MACOSX_BUNDLE_BUNDLE_NAME "${TP_BUNDLE_NAME}")
    set(MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}")
    set(MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}")
endmacro()

# Makes `target` the phone app: an app bundle with the Info.plist, the app icon set and the
# four entitlements, signed by Xcode with the entitlements file.
function(tp_make_ios_app target)
    set(assets "${TP_IOS_PACKAGING_DIR}/Assets.xcassets")
    target_sources(${target} PRIVATE "${assets}")
    set_source_files_properties("${assets}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME "${TP_BUNDLE_NAME}"
        MACOSX_BUNDLE TRUE
        MACOSX_BUNDLE_INFO_PLIST "${TP_IOS_PACKAGING_DIR}/Info.plist.in"
        MACOSX_BUNDLE_GUI_IDENTIFIER "${TP_BUNDLE_IDENTIFIER}"
        MACOSX_BUNDLE_BUNDLE_NAME "${TP_BUNDLE_NAME}"
        MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
        MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}"
        XCODE_ATTRIBUTE_PRODUCT_BUNDLE_IDENTIFIER "${TP_BUNDLE_IDENTIFIER}"
        XCODE_ATTRIBUTE_CODE_SIGN_ENTITLEMENTS "${TP_IOS_PACKAGING_DIR}/TPCompanion.entitlements"
        XCODE_ATTRIBUTE_ASSETCATALOG_COMPILER_APPICON_NAME "AppIcon"
        XCODE_ATTRIBUTE_TARGETED_DEVICE_FAMILY "1,2"
        XCODE_ATTRIBUTE_IPHONEOS_DEPLOYMENT_TARGET "15.0")
endfunction()
