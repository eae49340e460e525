// shape: edge, softness
vec3 colourAt() {
    float isNew = clamp((shape.x - mapAt(pixel)) / shape.y, 0.0, 1.0);
    return mix(fromAt(pixel), toAt(pixel), isNew);
}
