// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The default material's two shader programs, built into the library in enciphered form.
//
//     const std::string fragmentText = kxUtils::decryptShader(__defaultMaterial_fp);
//
// GLSL 1.20. The pair lights a surface with the ambient, diffuse and specular terms of its material
// and of the one directional light gl_LightSource[0].
//
// Constant data: any thread may read it.
#pragma once

#include "../kxExport.h"

/// Fragment program: block for kxUtils::decryptShader, valid as long as the library is loaded.
extern KXUTILS_API const unsigned char __defaultMaterial_fp[784];

/// Vertex program: block for kxUtils::decryptShader, valid as long as the library is loaded.
extern KXUTILS_API const unsigned char __defaultMaterial_vp[535];
