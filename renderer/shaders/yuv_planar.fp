!!ARBfp1.0
OPTION ARB_precision_hint_fastest;
# PSO_YUV: planar YUV to RGB, for PIXEL_FORMAT_I420, PIXEL_FORMAT_YV12 and PIXEL_FORMAT_YUV422P.
# Texture units (2-D luminance textures): 0 = Y with coordinate set 0, 1 = U with set 1,
# 2 = V with set 2 (YV12 planes are exchanged on upload so that unit 1 holds U).
# Conversion (BT.601, limited range; samples in 0..1):
#   y = 1.1643 Y - 0.0625   (the offset is subtracted after scaling)
#   u = U - 0.5, v = V - 0.5
#   R = y + 1.5958 v;  G = y - 0.39173001 u - 0.81290001 v;  B = y + 2.017 u
#   A = alpha of the primary colour (the renderer's opacity)
PARAM c[2] = { { 1.1643, 0.0625, 0.5, 0 },
               { 1.5958, -0.39173001, -0.81290001, 2.017 } };
TEMP R0;
TEMP R1;
TEX R0.x, fragment.texcoord[0], texture[0], 2D;
TEX R0.y, fragment.texcoord[1], texture[1], 2D;
TEX R0.z, fragment.texcoord[2], texture[2], 2D;
MAD R0.x, R0.x, c[0].x, -c[0].y;
ADD R0.yz, R0, -c[0].z;
MAD R1.x, R0.z, c[1].x, R0.x;
MAD R1.y, R0.y, c[1].y, R0.x;
MAD R1.y, R0.z, c[1].z, R1.y;
MAD R1.z, R0.y, c[1].w, R0.x;
MOV R1.w, fragment.color.w;
MOV result.color, R1;
END
