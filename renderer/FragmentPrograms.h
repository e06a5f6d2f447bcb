// The four YUV-to-RGB ARB fragment programs of the OpenGL back-end, as NUL-terminated text.
//
// Their sources are the files in renderer/shaders/, built into the library unchanged; each file
// names its pixel formats, texture units and conversion constants in its opening comment. This
// header only exposes the texts: compiling and binding them is the OpenGL back-end's work.
#pragma once

extern const char* PSO_YUV;   // I420, YV12, YUV422P: units 0, 1, 2 = Y, U, V
extern const char* PSO_NV12;  // NV12: unit 0 = Y, unit 1 = interleaved UV
extern const char* PSO_UYVY;  // UYVY: unit 0, rectangle texture of luminance-alpha texels
extern const char* PSO_YUYV;  // YUYV: unit 0, rectangle texture of luminance-alpha texels
