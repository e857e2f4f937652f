// Poppler, which draws pages of PDF files. It is loaded when the first page is drawn: with what it brings along, that
// takes longer than a program without pictures needs from its start to its first page.

#pragma once

#include <poppler.h>

namespace tarnova {

/// The functions of libpoppler-glib that are used, under their own names without the prefix.
struct PopplerLibrary {
    decltype(&poppler_document_new_from_bytes) document_new_from_bytes;
    decltype(&poppler_document_get_page) document_get_page;
    decltype(&poppler_layers_iter_new) layers_iter_new;
    decltype(&poppler_layers_iter_free) layers_iter_free;
    decltype(&poppler_layers_iter_next) layers_iter_next;
    decltype(&poppler_layers_iter_get_child) layers_iter_get_child;
    decltype(&poppler_layers_iter_get_layer) layers_iter_get_layer;
    decltype(&poppler_layer_show) layer_show;
    decltype(&poppler_page_get_crop_box) page_get_crop_box;
    decltype(&poppler_page_get_size) page_get_size;
    decltype(&poppler_page_render) page_render;
    decltype(&poppler_page_render_for_printing_with_options) page_render_for_printing_with_options;
};

/// Whether it is installed, with all of these functions. Without it pages can't be read, as if they were damaged.
[[nodiscard]] bool popplerIsInstalled();

/// Only where `popplerIsInstalled`.
[[nodiscard]] const PopplerLibrary& poppler();

}  // namespace tarnova
