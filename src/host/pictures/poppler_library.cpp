#include "host/pictures/poppler_library.h"

#include <dlfcn.h>

#include <optional>
#include <type_traits>

namespace tarnova {
namespace {

constexpr const char* libraryName = "libpoppler-glib.so.8";

std::optional<PopplerLibrary> load() {
    void* const library = ::dlopen(libraryName, RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) return std::nullopt;
    PopplerLibrary out{};
    bool isWhole = true;
    const auto find = [library, &isWhole](const char* name, auto& function) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
        isWhole = isWhole && function != nullptr;
    };
    find("poppler_document_new_from_bytes", out.document_new_from_bytes);
    find("poppler_document_get_page", out.document_get_page);
    find("poppler_layers_iter_new", out.layers_iter_new);
    find("poppler_layers_iter_free", out.layers_iter_free);
    find("poppler_layers_iter_next", out.layers_iter_next);
    find("poppler_layers_iter_get_child", out.layers_iter_get_child);
    find("poppler_layers_iter_get_layer", out.layers_iter_get_layer);
    find("poppler_layer_show", out.layer_show);
    find("poppler_page_get_crop_box", out.page_get_crop_box);
    find("poppler_page_get_size", out.page_get_size);
    find("poppler_page_render", out.page_render);
    find("poppler_page_render_for_printing_with_options", out.page_render_for_printing_with_options);
    return isWhole ? std::optional(out) : std::nullopt;
}

const std::optional<PopplerLibrary>& loaded() {
    static const std::optional<PopplerLibrary> library = load();
    return library;
}

}  // namespace

bool popplerIsInstalled() {
    return loaded().has_value();
}

const PopplerLibrary& poppler() {
    return *loaded();
}

}  // namespace tarnova
