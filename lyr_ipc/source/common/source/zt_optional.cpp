#include <common/zt_optional.h>

namespace vyn_connector::common {

template std::optional<std::string>
ZtToOptional<zt_ptr_t, std::string, std::string (*)(const zt_ptr_t&, const zt_arena*)>(
    const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
