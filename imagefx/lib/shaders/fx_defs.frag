// Opens every fragment shader: an effect piece may use dFdx() and dFdy().
#ifdef GL_ES
#extension GL_OES_standard_derivatives : enable
#endif
