// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

/// \file
/// \brief The default material's two shader programs, built into the library in enciphered form.
///
///     const std::string fragmentText = kxUtils::decryptShader(__defaultMaterial_fp);
///
/// The programs are in GLSL 1.20. Together they light a surface with the ambient, diffuse and
/// specular terms of its material and of one directional light, gl_LightSource[0].
///
/// The data is constant: any thread may read it at any time.
#pragma once

#include "../kxExport.h"

/// The fragment program, a block for kxUtils::decryptShader(), valid as long as the library is
/// loaded.
extern KXUTILS_API const unsigned char __defaultMaterial_fp[784];

/// The vertex program, a block for kxUtils::decryptShader(), valid as long as the library is
/// loaded.
extern KXUTILS_API const unsigned char __defaultMaterial_vp[535];
