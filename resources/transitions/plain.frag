// shape: 1 for the new picture
vec3 colourAt() { return shape.x > 0.5 ? toAt(pixel) : fromAt(pixel); }
