// The texts of the runtime's own result codes.
#include <mur/result_code.h>

#include <cstdint>

namespace mur {

std::string_view rtl_result_code_message(int code) noexcept
{
    switch (static_cast<std::uint32_t>(code)) {
    case 0x00000000:
        return "No error";
    case 0x00000001:
        return "False";
    case 0x80000001:
        return "Interface not supported";
    case 0x80000040:
        return "Unexpected";
    case 0x80000041:
        return "Out of memory";
    case 0x80000042:
        return "Not supported";
    case 0x80000043:
        return "Not implemented";
    case 0x80000044:
        return "Buffer too small";
    case 0x80000045:
        return "Access denied";
    case 0x80000046:
        return "Invalid argument";
    case 0x8000004A:
        return "Not matched";
    case 0x8000004B:
        return "Unspecified error";
    case 0x8000004C:
        return "Not found";
    case 0x8000004D:
        return "Found";
    case 0x8000004F:
        return "Locked";
    case 0x80000050:
        return "Not locked";
    case 0x80000051:
        return "Operation cancelled";
    case 0x80000057:
        return "Method not found";
    case 0x80000058:
        return "Stack is empty";
    case 0x80000059:
        return "Media error";
    case 0x8000005A:
        return "Invalid signature";
    case 0x8000005B:
        return "Invalid version";
    case 0x8000005C:
        return "Invalid size";
    case 0x8000005D:
        return "Invalid type";
    case 0x8000005E:
        return "Invalid index";
    case 0x80000062:
        return "Out of space";
    case 0x80000063:
        return "Not ready";
    case 0x80000064:
        return "Less than";
    case 0x80000065:
        return "More than";
    case 0x80000066:
        return "Prohibited";
    case 0x80000067:
        return "Already done";
    case 0x80000068:
        return "Need reboot";
    case 0x80000069:
        return "Bases corrupted";
    case 0x8000006A:
        return "Invalid state";
    case 0x8000006B:
        return "Not initialized";
    case 0x8000006C:
        return "Insufficient resources";
    case 0x80000071:
        return "Invalid result";
    case 0x80000072:
        return "Unknown exception";
    case 0x80000076:
        return "Meta information not found";
    case 0x80000077:
        return "Numerical type overflow";
    case 0x80000078:
        return "File is too big";
    case 0x80000079:
        return "Trace level ok";
    case 0x8000007A:
        return "Trace level prohibited";
    case 0x80000100:
        return "Class not found";
    case 0x80000101:
        return "Settings are required";
    case 0x80000102:
        return "Unexpected settings";
    case 0x80000103:
        return "Wrong settings type";
    case 0x80000104:
        return "Wrong settings revision";
    case 0x80000105:
        return "Settings not found";
    case 0x80000106:
        return "Object is untrusted";
    case 0x80000180:
        return "Property not found";
    case 0x80000221:
        return "Operation timeout";
    case 0x80000300:
        return "Invalid symbol";
    case 0x80000301:
        return "Non dec symbol";
    case 0x80000302:
        return "Non hex symbol";
    case 0x80000303:
        return "Non base64 symbol";
    case 0x80000310:
        return "Syntax error";
    case 0x80000311:
        return "GUID syntax error";
    case 0x80000312:
        return "OID syntax error";
    case 0x80000313:
        return "DateTime syntax error";
    default:
        return "Unknown result code";
    }
}

} // namespace mur
