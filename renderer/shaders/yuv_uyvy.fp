!!ARBfp1.0
OPTION ARB_precision_hint_fastest;
# PSO_UYVY: packed 4:2:2 YUV to RGB, for PIXEL_FORMAT_UYVY (bytes U Y0 V Y1 per pixel pair).
# Texture unit 0 only: a rectangle texture of luminance-alpha texels, one texel per pixel
# (even texel = (U, Y0), odd texel = (V, Y1)), coordinate set 0 in texels.
# Each fragment takes its own Y (alpha of its texel) and the pair's U (luminance of the even
# texel) and V (luminance of the odd texel); texels are sampled at their centres.
# Conversion (BT.601, limited range; samples in 0..1):
#   y = 1.1643 Y - 0.0625   (the offset is subtracted after scaling)
#   u = U - 0.5, v = V - 0.5
#   R = y + 1.5958 v;  G = y - 0.39173001 u - 0.81290001 v;  B = y + 2.017 u
#   A = alpha of the primary colour (the renderer's opacity)
PARAM c[3] = { { 1.1643, 0.0625, 0.5, 0.25 },
               { 1.5958, -0.39173001, -0.81290001, 2.017 },
               { 1, 0, 0, 0 } };
TEMP R0;
TEMP R1;
# p = texel coordinate truncated toward zero
ABS R0.xy, fragment.texcoord[0];
FLR R0.xy, R0;
CMP R0.xy, fragment.texcoord[0], -R0, R0;
# R1.x = 1 on an odd column: frac(p.x / 2) is 0.5 there
MUL R1.x, R0.x, c[0].z;
FRC R1.x, R1.x;
SLT R1.x, c[0].w, R1.x;
# centre of the even texel of the pair, then the odd one
ADD R0.x, R0.x, -R1.x;
ADD R0.xy, R0, c[0].z;
TEX R0.zw, R0, texture[0], RECT;
ADD R0.x, R0.x, c[2].x;
TEX R1.yw, R0, texture[0], RECT;
# Y = own texel's alpha; U = even luminance (R0.z); V = odd luminance (R1.y)
CMP R1.z, -R1.x, R1.w, R0.w;
MAD R1.z, R1.z, c[0].x, -c[0].y;
ADD R0.z, R0.z, -c[0].z;
ADD R1.y, R1.y, -c[0].z;
MAD R0.x, R1.y, c[1].x, R1.z;
MAD R0.y, R0.z, c[1].y, R1.z;
MAD R0.y, R1.y, c[1].z, R0.y;
MAD R0.z, R0.z, c[1].w, R1.z;
MOV R0.w, fragment.color.w;
MOV result.color, R0;
END
