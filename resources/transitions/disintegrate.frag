// shape: edge, softness, rows to the shadow, how dark it is
float newAt(vec2 point) { return clamp((shape.x - mapAt(point)) / shape.y, 0.0, 1.0); }
vec3 colourAt() {
    vec2 above = vec2(pixel.x, max(pixel.y - shape.z, 0.5));
    float shadow = (1.0 - newAt(above)) * shape.w;
    return mix(fromAt(pixel), toAt(pixel) * (1.0 - shadow), newAt(pixel));
}
