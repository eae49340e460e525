// shape: outer radius, width of the ring, displacement
const float pi = 3.14159265;
vec3 colourAt() {
    vec2 fromMiddle = pixel - size * 0.5;
    float distance = length(fromMiddle);
    float part = (shape.x - distance) / shape.y;
    if (part <= 0.0) return fromAt(pixel);
    if (part >= 1.0) return toAt(pixel);
    float slope = sin(2.0 * pi * part) * sin(pi * part);
    vec2 lean = fromMiddle * slope / max(distance, 1.0);
    vec2 seen = pixel - lean * shape.z;
    float isNew = part * part * (3.0 - 2.0 * part);
    return shineOver(mix(fromAt(seen), toAt(seen), isNew), lean);
}
