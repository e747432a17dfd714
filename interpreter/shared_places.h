#pragma once

/// Places that every program which works with foreign files may read within the wall, where Linux
/// distributions lay them. A program adds its own.
namespace rastrel::interpreter {

/// Libraries, which load others at their first use (decoders, encodings), and the loader's
/// settings.
inline constexpr const char* LibraryPlaces[] = {
    "/lib",
    "/lib32",
    "/lib64",
    "/usr/lib",
    "/usr/lib32",
    "/usr/lib64",
    "/usr/local/lib",
    "/nix/store",
    "/gnu/store",
    "/etc/ld.so.cache",
    "/usr/share/poppler",  // encodings of Asian text
    "/etc/localtime",
    "/usr/share/zoneinfo",
    "/sys/devices/system/cpu",
    "/dev/urandom",
};

/// Fonts and their settings. Directories of fonts may hold links from one to another of these.
inline constexpr const char* FontPlaces[] = {
    "/usr/share/fonts",           "/usr/local/share/fonts",
    "/usr/share/X11/fonts",       "/usr/share/texmf",
    "/usr/share/texlive",         "/usr/share/ghostscript",
    "/var/lib/ghostscript",       "/etc/fonts",
    "/usr/share/fontconfig",      "/usr/share/xml/fontconfig",
    "/usr/local/share/fontconfig"};

}  // namespace rastrel::interpreter
