// shape: part of the new picture
vec3 colourAt() { return mix(fromAt(pixel), toAt(pixel), shape.x); }
