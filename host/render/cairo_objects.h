#pragma once

#include <memory>
#include <string>

// The drawing library's objects, whose header only sources include.
typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;
struct cairo_path;

/// Owners of the drawing library's objects.
namespace rastrel::render {

/// Ends an object of cairo.
struct CairoEnd {
  void operator()(cairo_t* context) const;
  void operator()(cairo_surface_t* surface) const;
  void operator()(cairo_path* path) const;
};
using CairoContext = std::unique_ptr<cairo_t, CairoEnd>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoEnd>;
using CairoPath = std::unique_ptr<cairo_path, CairoEnd>;

/// A surface whose pages become a PDF file, `width` by `height` points each. Its bytes are appended
/// to `bytes`, which must outlive it; the file is whole once the surface is finished.
[[nodiscard]] CairoSurface PdfSurface(std::string& bytes, double width, double height);

/// The pixels of a surface as a PNG file; empty if there is no memory for it.
[[nodiscard]] std::string PngBytes(cairo_surface_t* surface);

}  // namespace rastrel::render
