<p>Please sign in to see your orders.</p>
