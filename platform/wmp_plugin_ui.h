#pragma once

// The player's UI plug-in interface and its capability flags, which mingw's headers lack. The
// platform defines the names and the order of the methods.

#include <windows.h>

#include <wmp.h>

// Capabilities: one type and any flags, stored as one number in the plug-in's registry key.
constexpr DWORD PLUGIN_TYPE_MASK = 0x0000000F;
constexpr DWORD PLUGIN_TYPE_BACKGROUND = 0x00000001;
constexpr DWORD PLUGIN_TYPE_SEPARATEWINDOW = 0x00000002;
constexpr DWORD PLUGIN_FLAGS_ACCEPTSPLAYLISTS = 0x08000000;
constexpr DWORD PLUGIN_FLAGS_ACCEPTSMEDIA = 0x10000000;
constexpr DWORD PLUGIN_FLAGS_INSTALLAUTORUN = 0x40000000;

// Under HKEY_LOCAL_MACHINE: one subkey for each plug-in, named by its CLSID in braces.
constexpr const wchar_t* PLUGIN_INSTALLREGKEY = L"SOFTWARE\\Microsoft\\MediaPlayer\\UIPlugins";
constexpr const wchar_t* PLUGIN_INSTALLREGKEY_CAPABILITIES = L"Capabilities";
constexpr const wchar_t* PLUGIN_INSTALLREGKEY_FRIENDLYNAME = L"FriendlyName";
constexpr const wchar_t* PLUGIN_INSTALLREGKEY_DESCRIPTION = L"Description";

// Property names of SetProperty; the value is a safe array of IUnknown pointers.
constexpr const wchar_t* PLUGIN_MISC_MEDIASENDTO = L"MediaSendTo";
constexpr const wchar_t* PLUGIN_MISC_PLAYLISTSENDTO = L"PlaylistSendTo";

// Property name of GetProperty. The player reads it before it closes or turns the plug-in off. A
// text (VT_BSTR) that is not empty asks the player to wait and tells the user why.
constexpr const wchar_t* PLUGIN_MISC_QUERYDESTROY = L"QueryDestroy";

// ANSI name of the window message with which an installer tells running players that the list of
// plug-ins changed.
constexpr const char* PLUGIN_ADD_REMOVE_MESSAGE = "WMPlayer_PluginAddRemove";

// Implemented by the plug-in; the player calls it on its user-interface thread only. A background
// plug-in gets neither Create nor Destroy.
MIDL_INTERFACE("4c5e8f9f-ad3e-4bf9-9753-fcd30d6d38dd")
IWMPPluginUI : public IUnknown {
public:
    // Passes the player's automation object after creation, and null before the plug-in is
    // released.
    virtual HRESULT STDMETHODCALLTYPE SetCore(IWMPCore * core) = 0;
    virtual HRESULT STDMETHODCALLTYPE Create(HWND parent, HWND * window) = 0;
    virtual HRESULT STDMETHODCALLTYPE Destroy() = 0;
    virtual HRESULT STDMETHODCALLTYPE DisplayPropertyPage(HWND parent) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(const WCHAR* name, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperty(const WCHAR* name, const VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG * message) = 0;
};

#ifdef __CRT_UUID_DECL
__CRT_UUID_DECL(IWMPPluginUI, 0x4c5e8f9f, 0xad3e, 0x4bf9, 0x97, 0x53, 0xfc, 0xd3, 0x0d, 0x6d, 0x38,
                0xdd)
#endif
