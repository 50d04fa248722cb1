#pragma once

// Declarations of the Windows Media Format runtime (WMVCore.dll) that mingw's wmsdkidl.h lacks: the
// second editor interface, the picture record and the attribute names that we use.
// media/format_runtime.h loads the runtime.

#include <windows.h>

#include <nserror.h>
#include <wmsdkidl.h>

#ifndef __IWMMetadataEditor2_INTERFACE_DEFINED__
#define __IWMMetadataEditor2_INTERFACE_DEFINED__

MIDL_INTERFACE("203CFFE3-2E18-4FDF-B59D-6E71530534CF")
IWMMetadataEditor2 : public IWMMetadataEditor {
public:
    // desiredAccess: GENERIC_READ, or both GENERIC_READ and GENERIC_WRITE; shareMode: FILE_SHARE_*.
    virtual HRESULT STDMETHODCALLTYPE OpenEx(const WCHAR* fileName, DWORD desiredAccess,
                                             DWORD shareMode) = 0;
};
__CRT_UUID_DECL(IWMMetadataEditor2, 0x203cffe3, 0x2e18, 0x4fdf, 0xb5, 0x9d, 0x6e, 0x71, 0x53, 0x05,
                0x34, 0xcf)

// The value of "WM/Picture" in memory. The platform packs it to one byte: 17 bytes in a 32-bit
// process. When it is read, the pointers point into the buffer that the reader supplied, so the
// buffer's length is more than the record's; when it is added, they may point anywhere.
#pragma pack(push, 1)
struct WM_PICTURE {
    LPWSTR pwszMIMEType;
    BYTE bPictureType;
    LPWSTR pwszDescription;
    DWORD dwDataLen;
    BYTE* pbData;
};
#pragma pack(pop)
static_assert(sizeof(WM_PICTURE) == 3 * sizeof(void*) + 5);

#endif

// Error codes of the runtime that mingw's nserror.h lacks.
#ifndef ASF_E_BADLANGUAGEID
#define ASF_E_BADLANGUAGEID static_cast<HRESULT>(0xC00D07D2)
#endif
#ifndef ASF_E_NOTFOUND
#define ASF_E_NOTFOUND static_cast<HRESULT>(0xC00D07F0)
#endif

#ifndef ASF_E_INVALIDSTATE
#define ASF_E_INVALIDSTATE static_cast<HRESULT>(0xC00D07F5)
#endif

namespace orvane::wm_format {

inline constexpr wchar_t kPictureAttribute[] = L"WM/Picture";

}  // namespace orvane::wm_format
