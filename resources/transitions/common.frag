// Before the shader of each style, which has a colourAt(). Points are device pixels of the view from
// its top left corner. Pictures lie in memory as blue, green, red.
#ifdef GL_ES
precision highp float;
#endif
varying vec2 pixel;
uniform sampler2D fromPicture;
uniform sampler2D toPicture;
uniform sampler2D map;   // low byte, high byte
uniform sampler2D shine; // straight alpha
uniform vec2 size;
uniform vec4 shape;

vec3 fromAt(vec2 point) { return texture2D(fromPicture, point / size).bgr; }
vec3 toAt(vec2 point) { return texture2D(toPicture, point / size).bgr; }
float mapAt(vec2 point) {
    vec4 bytes = texture2D(map, point / size);
    return (bytes.r + bytes.g * 256.0) / 257.0;
}
vec3 shineOver(vec3 colour, vec2 lean) {
    vec4 light = texture2D(shine, lean * 0.5 + 0.5).bgra;
    return mix(colour, light.rgb, light.a);
}
